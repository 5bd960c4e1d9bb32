#pragma once
// Checks that a test leaves no open descriptors and no temporary files.

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace support {

// Returns the open descriptors of this process, with the path of each.
std::map<int, std::string> openDescriptors();

// Fails each test that ends with other open descriptors than it began with, or
// leaves something in the temporary folder, by whatever process. Each test gets a
// temporary folder of its own, so that other programs do not matter.
class LeftOverCheck : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo&) override;
  void OnTestEnd(const testing::TestInfo&) override;

 private:
  std::string before_;  // the temporary folder of all tests
  std::string folder_;
  std::map<int, std::string> descriptors_;
};

}  // namespace support
