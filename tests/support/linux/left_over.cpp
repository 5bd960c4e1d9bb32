#include "support/linux/left_over.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "support/platform.h"

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

void LeftOverCheck::OnTestStart(const testing::TestInfo&) {
  before_ = std::filesystem::temp_directory_path();
  folder_ = makeTemporaryFolder();
  setenv("TMPDIR", folder_.c_str(), 1);
  descriptors_ = openDescriptors();
}

void LeftOverCheck::OnTestEnd(const testing::TestInfo&) {
  EXPECT_EQ(openDescriptors(), descriptors_);
  std::vector<std::string> files;
  for (const auto& item : std::filesystem::recursive_directory_iterator(folder_)) {
    files.push_back(item.path());
  }
  EXPECT_EQ(files, std::vector<std::string>());
  std::filesystem::remove_all(folder_);
  setenv("TMPDIR", before_.c_str(), 1);
}

}  // namespace support
