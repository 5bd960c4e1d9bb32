#include <filesystem/path.h>

#include <string_view>

namespace FileSystem {

std::string eraseInvalidCharacter(const std::string& name) {
  constexpr std::string_view kInvalid = "\\/:?\"<>|";
  std::string clean = name;
  std::erase_if(clean, [=](char c) { return kInvalid.find(c) != std::string_view::npos; });
  return clean;
}

}  // namespace FileSystem
