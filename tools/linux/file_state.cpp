#include "file_state.h"

#include <sys/stat.h>

#include "paths.h"

std::optional<FileState> stateOf(const std::string& path) {
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  struct stat status {};
  if (stat(systemPath(path).c_str(), &status) != 0) return std::nullopt;
  return FileState{{status.st_dev, status.st_ino},
                   status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}
