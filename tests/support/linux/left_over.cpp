#include "support/linux/left_over.h"

#include <unistd.h>

#include <filesystem>

namespace support {

std::map<int, std::string> openDescriptors() {
  const std::string list = "/proc/" + std::to_string(getpid()) + "/fd";
  std::map<int, std::string> descriptors;
  for (const auto& item : std::filesystem::directory_iterator(list)) {
    const std::string target = std::filesystem::read_symlink(item).string();
    // Reading the list takes a descriptor too.
    if (target != list) descriptors[std::stoi(item.path().filename())] = target;
  }
  return descriptors;
}

}  // namespace support
