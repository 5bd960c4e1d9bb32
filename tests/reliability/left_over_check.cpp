// No test of this program may leave files or descriptors.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/linux/left_over.h"
#include "support/platform.h"
#include "support/programs.h"
#include "support/sanitized.h"

namespace {

// Without the pipes to the program that finds the names for a sanitizer's reports. A sanitizer starts
// it for the first one, also for one that is suppressed.
std::map<int, std::string> openDescriptors() {
  std::map<int, std::string> descriptors = support::openDescriptors();
  if (support::kSanitized) {
    std::erase_if(descriptors, [](const auto& item) { return item.second.starts_with("pipe:"); });
  }
  return descriptors;
}

// Each test gets a temporary folder of its own, so that other programs do not matter. It may leave
// nothing there, by whatever process.
class LeftOverCheck : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override {
    before_ = std::filesystem::temp_directory_path();
    folder_ = support::makeTemporaryFolder();
    // Tests also act as other users.
    std::filesystem::permissions(folder_, std::filesystem::perms(0711));
    setenv("TMPDIR", folder_.c_str(), 1);
    descriptors_ = openDescriptors();
  }

  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_EQ(openDescriptors(), descriptors_);
    EXPECT_EQ(support::outputOf(folder_, "find . -mindepth 1"), "");
    std::filesystem::remove_all(folder_);
    setenv("TMPDIR", before_.c_str(), 1);
  }

  std::string before_;  // the temporary folder of all tests
  std::string folder_;
  std::map<int, std::string> descriptors_;
};

[[maybe_unused]] const bool kChecked = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new LeftOverCheck);
  return true;
}();

}  // namespace
