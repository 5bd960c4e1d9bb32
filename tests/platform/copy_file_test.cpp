#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/other_process.h"
#include "support/temporary_folder.h"

namespace {

// The argument is the folder of source and target.
const support::Work kCopy("copy", [](const std::string& folder, const support::Channel& channel) {
  channel.reportReady();
  return CopyFileA((folder + "source").c_str(), (folder + "target").c_str(), FALSE) ? 0 : 1;
});

class Copying : public testing::Test {
 protected:
  bool copy(bool failIfExists = false) const {
    return CopyFileA(source_.c_str(), target_.c_str(), failIfExists) != FALSE;
  }
  // Since 1601, in units of 100 ns.
  ULONGLONG writeTimeOf(const std::string& path) const {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    EXPECT_TRUE(GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data));
    return ULONGLONG{data.ftLastWriteTime.dwHighDateTime} << 32 |
           data.ftLastWriteTime.dwLowDateTime;
  }

  support::TemporaryFolder folder_;
  std::string source_ = folder_.file("source");
  std::string target_ = folder_.file("target");
};

TEST_F(Copying, KeepsContentTimeAndAttributes) {
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 3000000U}) {
    for (const bool exists : {false, true}) {
      SCOPED_TRACE(testing::Message() << size << exists);
      std::filesystem::remove(target_);
      std::string bytes(size, 'x');
      if (size > 0) bytes[size / 2] = 'y';
      support::writeFile(source_, bytes);
      support::setWriteTime(source_, 123456789, 123456700);
      if (exists) support::writeFile(target_, "something old");
      ASSERT_TRUE(copy());
      EXPECT_TRUE(support::readFile(target_) == bytes);
      EXPECT_EQ(writeTimeOf(target_), 117679303891234567U);
      EXPECT_EQ(folder_.entries(), 2U);
    }
  }
  support::makeReadOnly(source_);
  ASSERT_TRUE(copy());
  const bool isReadOnly = (GetFileAttributesA(target_.c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
  EXPECT_EQ(isReadOnly, support::kPlatform.copyCarriesReadOnly);
}

// A held target is overwritten in place if its holders share writing, so that
// they keep the file and it stays theirs.
TEST_F(Copying, HeldTargets) {
  constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
  struct {
    DWORD access, share, error;
  } const cases[] = {
      {GENERIC_READ, 7, ERROR_SUCCESS},
      {GENERIC_READ, 3, ERROR_SUCCESS},
      {GENERIC_READ, 5, ERROR_SHARING_VIOLATION},
      {GENERIC_READ, 0, ERROR_SHARING_VIOLATION},
      {kReadWrite, 7, ERROR_SUCCESS},
      {kReadWrite, 3, ERROR_SUCCESS},
      {kReadWrite, 1, ERROR_SHARING_VIOLATION},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.access << ' ' << c.share);
    for (const std::string& text : {std::string("new"), std::string(100000, 'n')}) {
      support::writeFile(source_, text);
      support::writeFile(target_, std::string(200000, 'o'));
      const platform::FileHandle holder(
          CreateFileA(target_.c_str(), c.access, c.share, nullptr, OPEN_EXISTING, 0, nullptr));
      const bool isCopied = c.error == ERROR_SUCCESS;
      EXPECT_EQ(copy(), isCopied);
      LARGE_INTEGER size{};
      EXPECT_TRUE(GetFileSizeEx(holder.get(), &size));
      EXPECT_EQ(size.QuadPart, isCopied ? static_cast<LONGLONG>(text.size()) : 200000);
      if (!isCopied) {
        EXPECT_EQ(GetLastError(), c.error);
      } else {
        EXPECT_TRUE(support::readFile(target_) == text);
      }
      EXPECT_EQ(DeleteFileA(target_.c_str()) != FALSE, (c.share & FILE_SHARE_DELETE) != 0);
    }
  }
}

TEST_F(Copying, RefusesTheSameFile) {
  support::writeFile(source_, "content");
  std::filesystem::create_hard_link(source_, folder_.file("hard"));
  for (const char* name : {"source", "hard"}) {
    EXPECT_FALSE(CopyFileA(source_.c_str(), folder_.file(name).c_str(), FALSE)) << name;
    EXPECT_EQ(support::readFile(source_), "content");
  }
}

TEST_F(Copying, KilledOneKeepsTheOldContent) {
  const std::string old(100, 'o');
  support::writeFile(source_, std::string(30000000, 'n'));
  for (int round = 0; round < 30; ++round) {
    support::writeFile(target_, old);
    support::OtherProcess process(kCopy, folder_.text());
    ASSERT_TRUE(process.awaitReady());
    std::this_thread::sleep_for(std::chrono::microseconds(round * 400));
    process.kill();
    const std::string now = support::readFile(target_);
    EXPECT_TRUE(now == old || now.size() == 30000000U) << now.size();
  }
}

}  // namespace
