// Opening files, and their handles.

#include "platform/conformance.h"
#include "platform/probe_open.h"

namespace {

LONGLONG sizeOf(const platform::FileHandle& file) {
  LARGE_INTEGER size{};
  EXPECT_TRUE(GetFileSizeEx(file.get(), &size));
  return size.QuadPart;
}

// Every disposition that the library uses with every access, on each kind of name.
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
      {"file", CREATE_NEW, ERROR_FILE_EXISTS, ERROR_FILE_EXISTS},
      {"file", CREATE_ALWAYS, ERROR_ALREADY_EXISTS, ERROR_ALREADY_EXISTS},
      {"file", OPEN_EXISTING, ERROR_SUCCESS, ERROR_SUCCESS},
      {"file", OPEN_ALWAYS, ERROR_ALREADY_EXISTS, ERROR_ALREADY_EXISTS},
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
      SetLastError(ERROR_SUCCESS);
      platform::FileHandle file = open(c.name, access, 3, c.disposition);
      EXPECT_EQ(GetLastError(), expected);
      EXPECT_EQ(static_cast<bool>(file),
                expected == ERROR_SUCCESS || expected == ERROR_ALREADY_EXISTS);
      if (file && std::string_view(c.name) == "file") {
        EXPECT_EQ(sizeOf(file), c.disposition == CREATE_ALWAYS ? 0 : 5);
      }
      file.reset();
      EXPECT_EQ(exists("missing"),
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
}

// Every share mode, against each right that it may deny.
TEST_F(Conformance, Sharing) {
  for (DWORD share = 0; share < 8; ++share) {
    const platform::FileHandle holder = open("other", kRead, share);
    EXPECT_EQ(static_cast<bool>(open("other", kRead, 7)), (share & FILE_SHARE_READ) != 0) << share;
    EXPECT_EQ(static_cast<bool>(open("other", kWrite, 7)), (share & FILE_SHARE_WRITE) != 0)
        << share;
    EXPECT_EQ(static_cast<bool>(open("other", DELETE, 7)), (share & FILE_SHARE_DELETE) != 0)
        << share;
  }
}

TEST_F(Conformance, NullDeviceTakesWhatIsWrittenAndLeavesNoFile) {
  for (const char* const name : {"NUL", "nul", "\\\\.\\NUL"}) {
    for (const DWORD disposition :
         {DWORD{OPEN_EXISTING}, DWORD{OPEN_ALWAYS}, DWORD{CREATE_ALWAYS}}) {
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
