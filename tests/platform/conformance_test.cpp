// Calls of the platform, with the results and error codes of Windows. One set of
// tables is for both the Linux layer and Windows itself.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kRead = GENERIC_READ;
constexpr DWORD kWrite = GENERIC_WRITE;
constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
// Truncating a file without the right to write has no published error.
constexpr DWORD kUnspecified = 0xFFFFFFFF;

class Conformance : public testing::Test {
 protected:
  void SetUp() override {
    support::writeFile(folder_.file("file"), "12345");
    support::writeFile(folder_.file("other"), "67");
    support::writeFile(folder_.file("read-only"), "r");
    support::makeReadOnly(folder_.file("read-only"));
    support::writeFile(folder_.file("held"), "h");
    support::writeFile(folder_.file("full/inside"), "");
    std::filesystem::create_directory(folder_.path() / "empty");
    std::filesystem::create_directory(folder_.path() / "current");
    std::filesystem::current_path(folder_.path() / "current");
    holder_.reset(CreateFileA(at("held").c_str(), kRead, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(holder_);
  }
  void TearDown() override { std::filesystem::current_path(former_); }
  std::string at(const std::string& name) const { return folder_.text() + name; }

  const std::filesystem::path former_ = std::filesystem::current_path();
  support::TemporaryFolder folder_;
  platform::FileHandle holder_;
};

// Every disposition with every access, on each kind of name.
TEST_F(Conformance, Opening) {
  struct {
    const char* name;
    DWORD disposition;
    DWORD forReading, forWriting;  // GetLastError afterwards, on success too
  } const cases[] = {
      {"missing", CREATE_NEW, ERROR_SUCCESS, ERROR_SUCCESS},
      {"missing", CREATE_ALWAYS, ERROR_SUCCESS, ERROR_SUCCESS},
      {"missing", OPEN_EXISTING, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
      {"missing", OPEN_ALWAYS, ERROR_SUCCESS, ERROR_SUCCESS},
      {"missing", TRUNCATE_EXISTING, kUnspecified, ERROR_FILE_NOT_FOUND},
      {"file", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"file", CREATE_ALWAYS, ERROR_ALREADY_EXISTS, ERROR_ALREADY_EXISTS},
      {"file", OPEN_EXISTING, ERROR_SUCCESS, ERROR_SUCCESS},
      {"file", OPEN_ALWAYS, ERROR_ALREADY_EXISTS, ERROR_ALREADY_EXISTS},
      {"file", TRUNCATE_EXISTING, kUnspecified, ERROR_SUCCESS},
      {"file", 0, ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
      {"file", 6, ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
      {"read-only", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"read-only", CREATE_ALWAYS, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
      {"read-only", TRUNCATE_EXISTING, kUnspecified, ERROR_ACCESS_DENIED},
      {"read-only", OPEN_EXISTING, ERROR_SUCCESS, ERROR_ACCESS_DENIED},
      {"read-only", OPEN_ALWAYS, ERROR_ALREADY_EXISTS, ERROR_ACCESS_DENIED},
      {"held", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"held", CREATE_ALWAYS, ERROR_SHARING_VIOLATION, ERROR_SHARING_VIOLATION},
      {"held", OPEN_EXISTING, ERROR_SHARING_VIOLATION, ERROR_SHARING_VIOLATION},
      {"held", OPEN_ALWAYS, ERROR_SHARING_VIOLATION, ERROR_SHARING_VIOLATION},
      {"full", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"full", OPEN_EXISTING, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
      {"full\\", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"file\\", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"file\\", OPEN_EXISTING, ERROR_INVALID_NAME, ERROR_INVALID_NAME},
      {"missing\\", CREATE_NEW, ERROR_INVALID_NAME, ERROR_INVALID_NAME},
      {"missing\\", OPEN_EXISTING, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
      {"none\\x\\", OPEN_ALWAYS, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
      {"missing\\..\\file", OPEN_EXISTING, ERROR_SUCCESS, ERROR_SUCCESS},
      {"file\\.", OPEN_EXISTING, ERROR_SUCCESS, ERROR_SUCCESS},
      {"file\\..\\full\\.\\..", OPEN_EXISTING, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
      {"none\\file", OPEN_EXISTING, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
      {"none\\file", CREATE_NEW, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
      {"file\\under", OPEN_EXISTING, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& c : cases) {
    for (const DWORD access : {kRead, kWrite, kReadWrite}) {
      SCOPED_TRACE(testing::Message() << c.name << ' ' << c.disposition << ' ' << access);
      const DWORD expected = access == kRead ? c.forReading : c.forWriting;
      if (expected == kUnspecified) continue;
      SetLastError(ERROR_SUCCESS);
      platform::FileHandle file(
          CreateFileA(at(c.name).c_str(), access, 3, nullptr, c.disposition, 0, nullptr));
      EXPECT_EQ(GetLastError(), expected);
      EXPECT_EQ(static_cast<bool>(file),
                expected == ERROR_SUCCESS || expected == ERROR_ALREADY_EXISTS);
      LARGE_INTEGER size{};
      if (file && std::string_view(c.name) == "file") {
        const bool empties = c.disposition == CREATE_ALWAYS || c.disposition == TRUNCATE_EXISTING;
        EXPECT_TRUE(GetFileSizeEx(file.get(), &size));
        EXPECT_EQ(size.QuadPart, empties ? 0 : 5);
      }
      file.reset();
      EXPECT_EQ(support::exists(folder_.file("missing")),
                std::string_view(c.name) == "missing" && expected == ERROR_SUCCESS);
      EXPECT_EQ(support::readFile(folder_.file("read-only")), "r");
      DeleteFileA(at("missing").c_str());
      support::writeFile(folder_.file("file"), "12345");
    }
  }
}

// Rights beside those of reading and writing, on a file that is free, one that is
// read-only, one that is held without any sharing, and one whose holder reads
// and shares reading alone.
TEST_F(Conformance, Rights) {
  const platform::FileHandle reader(
      CreateFileA(at("other").c_str(), kRead, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  constexpr DWORD kDenied = ERROR_ACCESS_DENIED;
  constexpr DWORD kViolation = ERROR_SHARING_VIOLATION;
  struct {
    DWORD access;
    DWORD file, readOnly, held, other;
  } const cases[] = {
      {0, 0, 0, 0, 0},
      {GENERIC_EXECUTE, 0, 0, kViolation, 0},
      {GENERIC_ALL, 0, kDenied, kViolation, kViolation},
      {FILE_READ_DATA, 0, 0, kViolation, 0},
      {FILE_WRITE_DATA, 0, kDenied, kViolation, kViolation},
      {FILE_APPEND_DATA, 0, kDenied, kViolation, kViolation},
      {FILE_EXECUTE, 0, 0, kViolation, 0},
      {DELETE, 0, 0, kViolation, kViolation},
  };
  for (const auto& c : cases) {
    const std::pair<const char*, DWORD> files[] = {
        {"file", c.file}, {"read-only", c.readOnly}, {"held", c.held}, {"other", c.other}};
    for (const auto& [name, error] : files) {
      SetLastError(ERROR_SUCCESS);
      const platform::FileHandle file(
          CreateFileA(at(name).c_str(), c.access, 3, nullptr, OPEN_EXISTING, 0, nullptr));
      EXPECT_EQ(static_cast<bool>(file), error == ERROR_SUCCESS) << name << ' ' << c.access;
      EXPECT_EQ(GetLastError(), error) << name << ' ' << c.access;
    }
  }
  // Who may delete is refused by one who denies it, and the other way round.
  const platform::FileHandle deleter(
      CreateFileA(at("file").c_str(), DELETE, 7, nullptr, OPEN_EXISTING, 0, nullptr));
  for (const DWORD share : {DWORD{3}, DWORD{7}}) {
    for (const DWORD access : {kRead, kReadWrite}) {
      const platform::FileHandle file(
          CreateFileA(at("file").c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
      EXPECT_EQ(static_cast<bool>(file), share == 7) << access;
    }
  }
  // A handle that appends writes at the end, wherever it is positioned.
  const platform::FileHandle appender(CreateFileA(at("full\\inside").c_str(), FILE_APPEND_DATA, 7,
                                                  nullptr, OPEN_EXISTING, 0, nullptr));
  for (const char* text : {"a", "b"}) {
    DWORD count = 0;
    OVERLAPPED start{};
    EXPECT_TRUE(WriteFile(appender.get(), text, 1, &count, &start));
  }
  EXPECT_EQ(support::readFile(folder_.file("full/inside")), "ab");
}

TEST_F(Conformance, Names) {
  const std::string file = at("file");
  struct {
    const char* what;
    std::function<BOOL()> call;
    DWORD error;
  } const cases[] = {
      {"delete held", [&] { return DeleteFileA(at("held").c_str()); }, ERROR_SHARING_VIOLATION},
      {"delete read-only", [&] { return DeleteFileA(at("read-only").c_str()); },
       ERROR_ACCESS_DENIED},
      {"delete folder", [&] { return DeleteFileA(at("empty").c_str()); }, ERROR_ACCESS_DENIED},
      {"delete missing", [&] { return DeleteFileA(at("missing").c_str()); }, ERROR_FILE_NOT_FOUND},
      {"delete file with separator", [&] { return DeleteFileA(at("file\\").c_str()); },
       ERROR_INVALID_NAME},
      {"delete folder with separator", [&] { return DeleteFileA(at("empty\\").c_str()); },
       ERROR_ACCESS_DENIED},
      {"delete below missing", [&] { return DeleteFileA(at("none\\x").c_str()); },
       ERROR_PATH_NOT_FOUND},
      {"delete empty text", [] { return DeleteFileA(""); }, ERROR_PATH_NOT_FOUND},
      {"remove full", [&] { return RemoveDirectoryA(at("full").c_str()); }, ERROR_DIR_NOT_EMPTY},
      {"remove file", [&] { return RemoveDirectoryA(file.c_str()); }, ERROR_DIRECTORY},
      {"remove missing", [&] { return RemoveDirectoryA(at("missing").c_str()); },
       ERROR_FILE_NOT_FOUND},
      {"remove below missing", [&] { return RemoveDirectoryA(at("none\\x").c_str()); },
       ERROR_PATH_NOT_FOUND},
      {"remove current", [&] { return RemoveDirectoryA(at("current").c_str()); },
       ERROR_SHARING_VIOLATION},
      {"make existing", [&] { return CreateDirectoryA(at("full").c_str(), nullptr); },
       ERROR_ALREADY_EXISTS},
      {"make over file", [&] { return CreateDirectoryA(file.c_str(), nullptr); },
       ERROR_ALREADY_EXISTS},
      {"make below missing", [&] { return CreateDirectoryA(at("none\\x").c_str(), nullptr); },
       ERROR_PATH_NOT_FOUND},
      {"make below file", [&] { return CreateDirectoryA(at("file\\x").c_str(), nullptr); },
       ERROR_PATH_NOT_FOUND},
      {"copy missing", [&] { return CopyFileA(at("missing").c_str(), at("copy").c_str(), FALSE); },
       ERROR_FILE_NOT_FOUND},
      {"copy held", [&] { return CopyFileA(at("held").c_str(), at("copy").c_str(), FALSE); },
       ERROR_SHARING_VIOLATION},
      {"copy over held", [&] { return CopyFileA(file.c_str(), at("held").c_str(), FALSE); },
       ERROR_SHARING_VIOLATION},
      {"copy over existing, which shall fail",
       [&] { return CopyFileA(file.c_str(), at("other").c_str(), TRUE); }, ERROR_FILE_EXISTS},
      {"copy over read-only",
       [&] { return CopyFileA(file.c_str(), at("read-only").c_str(), FALSE); },
       ERROR_ACCESS_DENIED},
      {"copy over folder", [&] { return CopyFileA(file.c_str(), at("full").c_str(), FALSE); },
       ERROR_ACCESS_DENIED},
      {"copy folder", [&] { return CopyFileA(at("full").c_str(), at("copy").c_str(), FALSE); },
       ERROR_ACCESS_DENIED},
      {"copy below missing",
       [&] { return CopyFileA(file.c_str(), at("none\\copy").c_str(), FALSE); },
       ERROR_PATH_NOT_FOUND},
      {"copy to existing with separator, which shall fail",
       [&] { return CopyFileA(file.c_str(), at("full\\").c_str(), TRUE); }, ERROR_FILE_EXISTS},
      {"copy to missing with separator",
       [&] { return CopyFileA(file.c_str(), at("missing\\").c_str(), FALSE); }, ERROR_INVALID_NAME},
      {"attributes of file with separator",
       [&] { return SetFileAttributesA(at("file\\").c_str(), FILE_ATTRIBUTE_NORMAL); },
       ERROR_INVALID_NAME},
      {"attributes of missing",
       [&] { return SetFileAttributesA(at("missing").c_str(), FILE_ATTRIBUTE_READONLY); },
       ERROR_FILE_NOT_FOUND},
      {"delete", [&] { return DeleteFileA(at("other").c_str()); }, ERROR_SUCCESS},
      {"remove", [&] { return RemoveDirectoryA(at("empty\\").c_str()); }, ERROR_SUCCESS},
      {"make", [&] { return CreateDirectoryA(at("empty\\").c_str(), nullptr); }, ERROR_SUCCESS},
      {"remove again", [&] { return RemoveDirectoryA(at("empty").c_str()); }, ERROR_SUCCESS},
      {"attributes",
       [&] { return SetFileAttributesA(at("read-only").c_str(), FILE_ATTRIBUTE_NORMAL); },
       ERROR_SUCCESS},
      {"delete after clearing read-only", [&] { return DeleteFileA(at("read-only").c_str()); },
       ERROR_SUCCESS},
  };
  for (const auto& c : cases) {
    SetLastError(ERROR_SUCCESS);
    const bool done = c.call() != FALSE;
    EXPECT_EQ(done, c.error == ERROR_SUCCESS) << c.what;
    if (!done) {
      EXPECT_EQ(GetLastError(), c.error) << c.what;
    }
  }
}

TEST_F(Conformance, Searches) {
  const std::string base = folder_.text() + "s";
  for (const char* name : {"a.tmp", "b.TMP", "ab", "cab.txt", "x.tm", "a.b.c", "noext"}) {
    support::writeFile(folder_.file(std::string("s/") + name), "");
  }
  struct {
    const char* pattern;
    std::vector<std::string> names;
  } const cases[] = {
      {"*.*", {".", "..", "a.b.c", "a.tmp", "ab", "b.TMP", "cab.txt", "noext", "x.tm"}},
      {"*", {".", "..", "a.b.c", "a.tmp", "ab", "b.TMP", "cab.txt", "noext", "x.tm"}},
      {"?a*", {"cab.txt"}},
      {"a*", {"a.b.c", "a.tmp", "ab"}},
      {"*.tmp", {"a.tmp", "b.TMP"}},
      {"*.TMP", {"a.tmp", "b.TMP"}},
      {"?.tmp", {"a.tmp", "b.TMP"}},
      {"*.b.*", {"a.b.c"}},
      {"ab", {"ab"}},
      {"*b*", {"a.b.c", "ab", "b.TMP", "cab.txt"}},
      {"no??t", {"noext"}},
      {"nothing*", {}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA data{};
    SetLastError(ERROR_SUCCESS);
    const platform::SearchHandle search(FindFirstFileA((base + "\\" + c.pattern).c_str(), &data));
    EXPECT_EQ(static_cast<bool>(search), !c.names.empty()) << c.pattern;
    if (!search) {
      EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND) << c.pattern;
      continue;
    }
    do {
      names.emplace_back(data.cFileName);
    } while (FindNextFileA(search.get(), &data) != FALSE);
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES) << c.pattern;
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, c.names) << c.pattern;
  }
  struct {
    const char* text;
    DWORD error;
  } const failures[] = {
      {"none\\*", ERROR_PATH_NOT_FOUND},
      {"missing", ERROR_FILE_NOT_FOUND},
      {"s\\", ERROR_FILE_NOT_FOUND},
  };
  for (const auto& c : failures) {
    WIN32_FIND_DATAA data{};
    EXPECT_EQ(FindFirstFileA(at(c.text).c_str(), &data), INVALID_HANDLE_VALUE) << c.text;
    EXPECT_EQ(GetLastError(), c.error) << c.text;
  }
}

TEST_F(Conformance, Times) {
  const std::string file = folder_.file("file");
  support::setWriteTime(file, 1600000000, 123456700);
  WIN32_FILE_ATTRIBUTE_DATA data{};
  ASSERT_TRUE(GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &data));
  SYSTEMTIME time{};
  ASSERT_TRUE(FileTimeToSystemTime(&data.ftLastWriteTime, &time));
  EXPECT_EQ(time.wYear, 2020);
  EXPECT_EQ(time.wMonth, 9);
  EXPECT_EQ(time.wDay, 13);
  EXPECT_EQ(time.wDayOfWeek, 0);
  EXPECT_EQ(time.wHour, 12);
  EXPECT_EQ(time.wMinute, 26);
  EXPECT_EQ(time.wSecond, 40);
  EXPECT_EQ(time.wMilliseconds, 123);
  // A search returns the same time as the attributes.
  WIN32_FIND_DATAA found{};
  const platform::SearchHandle search(FindFirstFileA(file.c_str(), &found));
  ASSERT_TRUE(search);
  EXPECT_EQ(found.ftLastWriteTime.dwLowDateTime, data.ftLastWriteTime.dwLowDateTime);
  EXPECT_EQ(found.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwHighDateTime);
  double date = 0;
  ASSERT_TRUE(SystemTimeToVariantTime(&time, &date));
  EXPECT_NEAR(date, 44087.518518518518, 1e-8);
}

TEST_F(Conformance, TextAndCodePages) {
  char buffer[4] = {'x', 'x', 'x', 'x'};
  EXPECT_EQ(lstrcpynA(buffer, "abcdef", 4), buffer);
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(lstrlenA(nullptr), 0);
  EXPECT_EQ(lstrcmpiA("ABC.tmp", "abc.TMP"), 0);
  EXPECT_NE(lstrcmpA("abc", "abd"), 0);
  WCHAR wide[8] = {};
  struct {
    UINT page;
    const char* text;
    int length, size, result;
    DWORD error;
  } const cases[] = {
      {CP_ACP, "abc", 3, 0, 3, ERROR_SUCCESS},
      {CP_OEMCP, "abc", -1, 8, 4, ERROR_SUCCESS},
      {CP_UTF8, "gr\xC3\xB6", 4, 8, 3, ERROR_SUCCESS},
      {CP_ACP, "abc", 3, 2, 0, ERROR_INSUFFICIENT_BUFFER},
      {CP_ACP, "abc", 0, 8, 0, ERROR_INVALID_PARAMETER},
      {CP_ACP, nullptr, 3, 8, 0, ERROR_INVALID_PARAMETER},
      {CP_ACP, "abc", 3, -1, 0, ERROR_INVALID_PARAMETER},
      {54321, "abc", 3, 8, 0, ERROR_INVALID_PARAMETER},
  };
  for (const auto& c : cases) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(MultiByteToWideChar(c.page, 0, c.text, c.length, wide, c.size), c.result);
    EXPECT_EQ(GetLastError(), c.error) << c.page << ' ' << c.length << ' ' << c.size;
  }
}

TEST_F(Conformance, Handles) {
  const platform::FileHandle file(
      CreateFileA(at("file").c_str(), kRead, 3, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(file);
  char byte = 0;
  DWORD count = 7;
  LARGE_INTEGER position{};
  LARGE_INTEGER distance{};
  distance.QuadPart = -1;
  EXPECT_FALSE(SetFilePointerEx(file.get(), distance, &position, FILE_BEGIN));
  EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
  EXPECT_TRUE(SetFilePointerEx(file.get(), distance, &position, FILE_END));
  EXPECT_EQ(position.QuadPart, 4);
  EXPECT_TRUE(ReadFile(file.get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(byte, '5');
  EXPECT_TRUE(ReadFile(file.get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(count, 0U);
  EXPECT_FALSE(WriteFile(file.get(), "x", 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(SetEndOfFile(file.get()));
  EXPECT_FALSE(FlushFileBuffers(file.get()));
  OVERLAPPED end{};
  end.Offset = 5;
  EXPECT_EQ(ReadFile(file.get(), &byte, 1, &count, &end) == FALSE,
            support::kPlatform.positionedReadFailsAtEnd);
  EXPECT_EQ(support::readFile(folder_.file("file")), "12345");

  const platform::FileHandle writer(
      CreateFileA(at("file").c_str(), kWrite, 3, nullptr, OPEN_EXISTING, 0, nullptr));
  count = 7;
  EXPECT_FALSE(ReadFile(writer.get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(count, 0U);
}

}  // namespace
