#include <gtest/gtest.h>

#include <string>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

TEST(FileHandles, ReadWriteSeekAndCut) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("file");
  const platform::FileHandle file(
      CreateFileA(path.c_str(), kReadWrite, 3, nullptr, CREATE_NEW, 0, nullptr));
  DWORD count = 0;
  ASSERT_TRUE(WriteFile(file.get(), "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10U);
  EXPECT_EQ(SetFilePointer(file.get(), -4, nullptr, FILE_END), 6U);
  char buffer[16] = {};
  EXPECT_TRUE(ReadFile(file.get(), buffer, sizeof(buffer), &count, nullptr));
  EXPECT_EQ(std::string(buffer, count), "6789");
  EXPECT_TRUE(ReadFile(file.get(), buffer, sizeof(buffer), &count, nullptr));
  EXPECT_EQ(count, 0U);
  OVERLAPPED at{};
  at.Offset = 2;
  EXPECT_TRUE(WriteFile(file.get(), "AB", 2, &count, &at));
  EXPECT_EQ(SetFilePointer(file.get(), -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
  EXPECT_EQ(SetFilePointer(file.get(), 5, nullptr, FILE_BEGIN), 5U);
  EXPECT_TRUE(SetEndOfFile(file.get()));
  LARGE_INTEGER size{};
  EXPECT_TRUE(GetFileSizeEx(file.get(), &size));
  EXPECT_EQ(size.QuadPart, 5);
  EXPECT_EQ(support::readFile(path), "01AB4");
  LONG high = 1;
  EXPECT_EQ(SetFilePointer(file.get(), 16, &high, FILE_BEGIN), 16U);
  EXPECT_EQ(high, 1);
}

}  // namespace
