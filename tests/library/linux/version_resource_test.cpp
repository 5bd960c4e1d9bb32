#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/win32.h"

namespace {

// A node of an odd length ends in the middle of a character of its key.
TEST(VersionResourceOnLinux, AKeyIsNotReadBeyondItsNode) {
  const std::string path = VESK_TEST_DATA "/version/plain.dll";
  const DWORD size = GetFileVersionInfoSizeA(path.c_str(), nullptr);
  ASSERT_GT(size, 0U);
  std::string block(size, '\0');
  ASSERT_TRUE(GetFileVersionInfoA(path.c_str(), 0, size, block.data()));
  constexpr std::size_t kResource = 8;  // its position in the block
  const std::string node("\x09\0\0\0\0\0a\0b", 9);
  std::fill(block.begin() + kResource, block.end(), 'x');
  block.replace(kResource, node.size(), node);
  void* value = nullptr;
  UINT length = 0;
  EXPECT_FALSE(VerQueryValueA(block.data(), "\\", &value, &length));
}

}  // namespace
