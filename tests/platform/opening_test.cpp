// Opening files, and their handles.

#include <string>
#include <string_view>

#include "platform/conformance.h"
#include "platform/probe_open.h"

namespace {

// Truncating a file without the right to write has no published error.
constexpr DWORD kUnspecified = 0xFFFFFFFF;

LONGLONG sizeOf(const platform::FileHandle& file) {
  LARGE_INTEGER size{};
  EXPECT_TRUE(GetFileSizeEx(file.get(), &size));
  return size.QuadPart;
}

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
      {"read-only", CREATE_ALWAYS, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED},
      {"read-only", OPEN_EXISTING, ERROR_SUCCESS, ERROR_ACCESS_DENIED},
      {"held", CREATE_ALWAYS, ERROR_SHARING_VIOLATION, ERROR_SHARING_VIOLATION},
      {"full\\", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"file\\", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"file\\", OPEN_EXISTING, ERROR_INVALID_NAME, ERROR_INVALID_NAME},
      {"missing\\", CREATE_NEW, ERROR_INVALID_NAME, ERROR_INVALID_NAME},
      {"missing\\", OPEN_EXISTING, ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
      {"none\\x\\", OPEN_ALWAYS, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
      {"none\\file", OPEN_EXISTING, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
  };
  for (const auto& c : cases) {
    for (const DWORD access : {kRead, kWrite, kReadWrite}) {
      SCOPED_TRACE(testing::Message() << c.name << ' ' << c.disposition << ' ' << access);
      const DWORD expected = access == kRead ? c.forReading : c.forWriting;
      if (expected == kUnspecified) continue;
      SetLastError(ERROR_SUCCESS);
      platform::FileHandle file = open(c.name, access, 3, c.disposition);
      EXPECT_EQ(GetLastError(), expected);
      EXPECT_EQ(static_cast<bool>(file),
                expected == ERROR_SUCCESS || expected == ERROR_ALREADY_EXISTS);
      if (file && std::string_view(c.name) == "file") {
        const bool empties = c.disposition == CREATE_ALWAYS || c.disposition == TRUNCATE_EXISTING;
        EXPECT_EQ(sizeOf(file), empties ? 0 : 5);
      }
      file.reset();
      EXPECT_EQ(support::exists(folder_.file("missing")),
                std::string_view(c.name) == "missing" && expected == ERROR_SUCCESS);
      EXPECT_EQ(read("read-only"), "r");
      EXPECT_EQ(sizeOf(holder_), 1);
      DeleteFileA(at("missing").c_str());
      write("file", "12345");
    }
  }
}

// Rights beside those of reading and writing, on a file that is free, one that is
// read-only, one that is held without any sharing, and one whose holder reads
// and shares reading alone.
TEST_F(Conformance, Rights) {
  const platform::FileHandle reader = open("other", kRead, FILE_SHARE_READ);
  constexpr DWORD kDenied = ERROR_ACCESS_DENIED;
  constexpr DWORD kViolation = ERROR_SHARING_VIOLATION;
  const char* const names[] = {"file", "read-only", "held", "other"};
  struct {
    DWORD access;
    DWORD errors[4];  // for each name
  } const cases[] = {
      {0, {0, 0, 0, 0}},
      {GENERIC_EXECUTE, {0, 0, kViolation, 0}},
      {GENERIC_ALL, {0, kDenied, kViolation, kViolation}},
      {FILE_READ_DATA, {0, 0, kViolation, 0}},
      {FILE_WRITE_DATA, {0, kDenied, kViolation, kViolation}},
      {FILE_APPEND_DATA, {0, kDenied, kViolation, kViolation}},
      {FILE_EXECUTE, {0, 0, kViolation, 0}},
      {DELETE, {0, 0, kViolation, kViolation}},
  };
  for (const auto& c : cases) {
    for (std::size_t i = 0; i < std::size(names); ++i) {
      SetLastError(ERROR_SUCCESS);
      const platform::FileHandle file = open(names[i], c.access);
      EXPECT_EQ(static_cast<bool>(file), c.errors[i] == ERROR_SUCCESS) << names[i] << c.access;
      EXPECT_EQ(GetLastError(), c.errors[i]) << names[i] << ' ' << c.access;
    }
  }
  // Who may delete is refused by one who denies it, and the other way round.
  const platform::FileHandle deleter = open("file", DELETE, 7);
  for (const DWORD share : {DWORD{3}, DWORD{7}}) {
    for (const DWORD access : {kRead, kReadWrite}) {
      EXPECT_EQ(static_cast<bool>(open("file", access, share)), share == 7) << access;
    }
  }
  // A handle that appends writes at the end, wherever it is positioned.
  const platform::FileHandle appender = open("full\\inside", FILE_APPEND_DATA, 7);
  for (const char* text : {"a", "b"}) {
    DWORD count = 0;
    OVERLAPPED start{};
    EXPECT_TRUE(WriteFile(appender.get(), text, 1, &count, &start));
  }
  EXPECT_EQ(read("full/inside"), "ab");
}

// Every access and share mode against every other one that is held open.
TEST_F(Conformance, Sharing) {
  const auto permits = [](DWORD share, DWORD access) {
    return ((access & kRead) == 0 || (share & FILE_SHARE_READ) != 0) &&
           ((access & kWrite) == 0 || (share & FILE_SHARE_WRITE) != 0);
  };
  for (const DWORD heldAccess : {kRead, kWrite, kReadWrite}) {
    for (DWORD heldShare = 0; heldShare < 8; ++heldShare) {
      write("shared", "content");
      const platform::FileHandle holder = open("shared", heldAccess, heldShare);
      for (const DWORD access : {kRead, kWrite, kReadWrite}) {
        for (DWORD share = 0; share < 8; ++share) {
          SetLastError(ERROR_SUCCESS);
          const bool granted = static_cast<bool>(open("shared", access, share));
          const bool expected = permits(heldShare, access) && permits(share, heldAccess);
          EXPECT_EQ(granted, expected)
              << heldAccess << '/' << heldShare << " against " << access << '/' << share;
          EXPECT_EQ(GetLastError(), expected ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION);
        }
      }
      EXPECT_EQ(DeleteFileA(at("shared").c_str()) != FALSE, (heldShare & FILE_SHARE_DELETE) != 0);
    }
  }
}

TEST_F(Conformance, ReadingWritingAndSeeking) {
  const platform::FileHandle file = open("new", kReadWrite, 3, CREATE_NEW);
  DWORD count = 0;
  EXPECT_TRUE(WriteFile(file.get(), "0123456789", 10, &count, nullptr));
  EXPECT_EQ(count, 10U);
  EXPECT_EQ(SetFilePointer(file.get(), -4, nullptr, FILE_END), 6U);
  char buffer[16] = {};
  for (const char* text : {"6789", ""}) {
    EXPECT_TRUE(ReadFile(file.get(), buffer, sizeof(buffer), &count, nullptr));
    EXPECT_EQ(std::string(buffer, count), text);
  }
  OVERLAPPED position{};
  position.Offset = 2;
  EXPECT_TRUE(WriteFile(file.get(), "AB", 2, &count, &position));
  position.Offset = 10;
  ReadFile(file.get(), buffer, 1, &count, &position);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(SetFilePointer(file.get(), -1, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
  EXPECT_EQ(SetFilePointer(file.get(), 5, nullptr, FILE_BEGIN), 5U);
  EXPECT_TRUE(SetEndOfFile(file.get()));
  EXPECT_EQ(sizeOf(file), 5);
  EXPECT_EQ(read("new"), "01AB4");
  if (!support::fileSystem().largeFiles) return;
  LONG high = 1;
  EXPECT_EQ(SetFilePointer(file.get(), 16, &high, FILE_BEGIN), 16U);
  EXPECT_EQ(high, 1);
}

TEST_F(Conformance, HandlesHaveTheirAccessOnly) {
  const HANDLE reader = holder_.get();
  char byte = 0;
  DWORD count = 0;
  EXPECT_FALSE(WriteFile(reader, "x", 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_FALSE(SetEndOfFile(reader));
  EXPECT_FALSE(FlushFileBuffers(reader));
  EXPECT_EQ(sizeOf(holder_), 1);
  count = 7;
  EXPECT_FALSE(ReadFile(open("file", kWrite).get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(count, 0U);
}

TEST_F(Conformance, NullDeviceTakesWhatIsWrittenAndLeavesNoFile) {
  for (const char* const name : {"NUL", "nul", "\\\\.\\NUL"}) {
    for (const DWORD disposition : {OPEN_EXISTING, OPEN_ALWAYS, CREATE_ALWAYS}) {
      const platform::FileHandle first = support::openFile(name, kReadWrite, 0, disposition);
      const platform::FileHandle second = support::openFile(name, kWrite, 0, disposition);
      char bytes[] = "text";
      DWORD count = 0;
      EXPECT_TRUE(WriteFile(second.get(), bytes, 4, &count, nullptr)) << name;
      EXPECT_EQ(count, 4U);
      EXPECT_TRUE(ReadFile(first.get(), bytes, 4, &count, nullptr)) << name;
      EXPECT_EQ(count, 0U);
    }
    EXPECT_TRUE(platform::probeOpen(name, kReadWrite, 0)) << name;
  }
  EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::current_path()));
}

}  // namespace
