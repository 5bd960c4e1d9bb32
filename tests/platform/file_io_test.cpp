#include <gtest/gtest.h>

#include <string>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

HANDLE open(const std::string& path, DWORD access, DWORD disposition) {
  return CreateFileA(path.c_str(), access, 3, nullptr, disposition, 0, nullptr);
}

TEST(Opening, Dispositions) {
  struct {
    DWORD disposition;
    bool existing;
    bool opens;
    DWORD error;
    const char* content;
  } const cases[] = {
      {CREATE_NEW, false, true, ERROR_SUCCESS, ""},
      {CREATE_NEW, true, false, ERROR_FILE_EXISTS, "old"},
      {CREATE_ALWAYS, false, true, ERROR_SUCCESS, ""},
      {CREATE_ALWAYS, true, true, ERROR_ALREADY_EXISTS, ""},
      {OPEN_EXISTING, false, false, ERROR_FILE_NOT_FOUND, nullptr},
      {OPEN_EXISTING, true, true, ERROR_SUCCESS, "old"},
      {OPEN_ALWAYS, false, true, ERROR_SUCCESS, ""},
      {OPEN_ALWAYS, true, true, ERROR_ALREADY_EXISTS, "old"},
      {TRUNCATE_EXISTING, false, false, ERROR_FILE_NOT_FOUND, nullptr},
      {TRUNCATE_EXISTING, true, true, ERROR_SUCCESS, ""},
  };
  const support::TemporaryFolder folder;
  const std::string path = folder.file("file");
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.disposition << (c.existing ? " existing" : " missing"));
    std::filesystem::remove(path);
    if (c.existing) support::writeFile(path, "old");
    const platform::FileHandle file(open(path, kReadWrite, c.disposition));
    EXPECT_EQ(GetLastError(), c.error);
    EXPECT_EQ(static_cast<bool>(file), c.opens);
    if (c.content == nullptr) {
      EXPECT_FALSE(std::filesystem::exists(path));
    } else {
      EXPECT_EQ(support::readFile(path), c.content);
    }
  }
  EXPECT_EQ(open(folder.file("missing/file"), GENERIC_READ, OPEN_EXISTING), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(open(path + "\\", GENERIC_READ, OPEN_EXISTING), INVALID_HANDLE_VALUE);
}

// For the superuser too.
TEST(Opening, ReadOnlyBindsEverybody) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("file");
  support::writeFile(path, "old");
  support::makeReadOnly(path);
  for (const DWORD disposition : {CREATE_ALWAYS, OPEN_EXISTING, OPEN_ALWAYS, TRUNCATE_EXISTING}) {
    EXPECT_EQ(open(path, kReadWrite, disposition), INVALID_HANDLE_VALUE) << disposition;
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  }
  EXPECT_EQ(support::readFile(path), "old");
  EXPECT_TRUE(platform::FileHandle(open(path, GENERIC_READ, OPEN_EXISTING)));
}

TEST(FileHandles, CarryTheirAccess) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("file");
  support::writeFile(path, "bytes");
  char byte = 'x';
  DWORD count = 7;
  const platform::FileHandle writer(open(path, GENERIC_WRITE, OPEN_EXISTING));
  EXPECT_FALSE(ReadFile(writer.get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(count, 0U);
  const platform::FileHandle reader(open(path, GENERIC_READ, OPEN_EXISTING));
  EXPECT_FALSE(WriteFile(reader.get(), &byte, 1, &count, nullptr));
  EXPECT_FALSE(SetEndOfFile(reader.get()));
  EXPECT_FALSE(FlushFileBuffers(reader.get()));
  EXPECT_EQ(support::readFile(path), "bytes");
}

TEST(FileHandles, ReadWriteSeekAndCut) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("file");
  const platform::FileHandle file(open(path, kReadWrite, CREATE_NEW));
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
