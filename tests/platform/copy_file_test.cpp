#include "support/folder_test.h"
#include "support/open_file.h"

namespace {

class Copying : public support::FolderTest {
 protected:
  bool copy() const { return CopyFileA(source_.c_str(), target_.c_str(), FALSE) != FALSE; }

  std::string source_ = folder_.file("source");
  std::string target_ = folder_.file("target");
};

TEST_F(Copying, KeepsContentTimeAndAttributes) {
  constexpr std::time_t kSeconds = 1600000000;
  constexpr long kNanoseconds = 123456700;
  constexpr ULONGLONG kSince1601 = 11644473600;
  const long kept = kNanoseconds - kNanoseconds % support::fileSystem().timeStep;
  const ULONGLONG expected =
      (kSince1601 + kSeconds) * 10'000'000 + static_cast<ULONGLONG>(kept) / 100;
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 3000000U}) {
    for (const bool exists : {false, true}) {
      SCOPED_TRACE(testing::Message() << size << exists);
      std::filesystem::remove(target_);
      std::string bytes(size, 'x');
      if (size > 0) bytes[size / 2] = 'y';
      support::writeFile(source_, bytes);
      support::setWriteTime(source_, kSeconds, kNanoseconds);
      if (exists) support::writeFile(target_, "something old");
      ASSERT_TRUE(copy());
      EXPECT_TRUE(support::readFile(target_) == bytes);
      WIN32_FILE_ATTRIBUTE_DATA data{};
      EXPECT_TRUE(GetFileAttributesExA(target_.c_str(), GetFileExInfoStandard, &data));
      const ULONGLONG high = data.ftLastWriteTime.dwHighDateTime;
      EXPECT_EQ(high << 32 | data.ftLastWriteTime.dwLowDateTime, expected);
      EXPECT_EQ(folder_.entries(), 2U);
    }
  }
}

// A held target is overwritten in place if its holders share writing, so that
// they keep the file and it stays theirs.
TEST_F(Copying, HeldTargets) {
  for (const DWORD access : {GENERIC_READ, GENERIC_READ | GENERIC_WRITE}) {
    for (const DWORD share : {0U, 1U, 3U, 5U, 7U}) {
      for (const std::string& text : {std::string("new"), std::string(100000, 'n')}) {
        SCOPED_TRACE(testing::Message() << access << ' ' << share);
        support::writeFile(source_, text);
        support::writeFile(target_, std::string(200000, 'o'));
        const platform::FileHandle holder = support::openFile(target_, access, share);
        const bool isCopied = (share & FILE_SHARE_WRITE) != 0;
        EXPECT_EQ(copy(), isCopied);
        LARGE_INTEGER size{};
        EXPECT_TRUE(GetFileSizeEx(holder.get(), &size));
        EXPECT_EQ(size.QuadPart, isCopied ? static_cast<LONGLONG>(text.size()) : 200000);
        if (!isCopied) {
          EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        } else {
          EXPECT_TRUE(support::readFile(target_) == text);
        }
        EXPECT_EQ(DeleteFileA(target_.c_str()) != FALSE, (share & FILE_SHARE_DELETE) != 0);
      }
    }
  }
}

}  // namespace
