#include "links.h"

bool isKeptLink(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_symlink(path, error);
}
