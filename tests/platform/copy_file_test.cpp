#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/other_process.h"
#include "support/temporary_folder.h"

namespace {

class CopyFile : public testing::Test {
 protected:
  bool copy(bool failIfExists = false) const {
    return CopyFileA(source_.c_str(), target_.c_str(), failIfExists) != FALSE;
  }
  struct stat statusOf(const std::string& path) const {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status;
  }
  std::size_t entries() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder_.path()), {}));
  }

  support::TemporaryFolder folder_;
  std::string source_ = folder_.file("source");
  std::string target_ = folder_.file("target");
};

TEST_F(CopyFile, KeepsContentTimeAndAttributes) {
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 3000000U}) {
    for (const bool exists : {false, true}) {
      SCOPED_TRACE(testing::Message() << size << exists);
      std::filesystem::remove(target_);
      std::string bytes(size, 'x');
      if (size > 0) bytes[size / 2] = 'y';
      support::writeFile(source_, bytes);
      const timespec times[] = {{1000, 0}, {123456789, 123456700}};
      utimensat(AT_FDCWD, source_.c_str(), times, 0);
      chmod(source_.c_str(), 0750);
      if (exists) {
        support::writeFile(target_, "something old");
        chmod(target_.c_str(), 0604);
      }
      ASSERT_TRUE(copy());
      EXPECT_TRUE(support::readFile(target_) == bytes);
      const struct stat status = statusOf(target_);
      EXPECT_EQ(status.st_mtim.tv_sec, 123456789);
      EXPECT_EQ(status.st_mtim.tv_nsec, 123456700);
      EXPECT_EQ(status.st_mode & 0777, exists ? 0604U : 0750U);
      EXPECT_EQ(entries(), 2U);
    }
  }
  chmod(source_.c_str(), 0444);
  ASSERT_TRUE(copy());
  EXPECT_EQ(statusOf(target_).st_mode & 0222, 0U);
}

TEST_F(CopyFile, RefusesAndLeavesAllAsItWas) {
  EXPECT_FALSE(copy());
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  support::writeFile(source_, "new");
  support::writeFile(target_, "old");
  EXPECT_FALSE(copy(true));
  EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
  {
    const platform::FileHandle writer(
        CreateFileA(target_.c_str(), GENERIC_WRITE, 3, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(copy());
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  }
  {
    const platform::FileHandle owner(
        CreateFileA(source_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(copy());
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  }
  chmod(target_.c_str(), 0444);
  EXPECT_FALSE(copy());
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(support::readFile(target_), "old");
  EXPECT_FALSE(CopyFileA(source_.c_str(), folder_.path().c_str(), FALSE));
  EXPECT_FALSE(CopyFileA(folder_.path().c_str(), target_.c_str(), FALSE));

  // The same file, by its own name, another one, and a link.
  std::filesystem::create_hard_link(source_, folder_.file("hard"));
  std::filesystem::create_symlink(source_, folder_.file("soft"));
  for (const char* name : {"source", "hard", "soft"}) {
    EXPECT_FALSE(CopyFileA(source_.c_str(), folder_.file(name).c_str(), FALSE)) << name;
    EXPECT_EQ(support::readFile(source_), "new");
  }
}

TEST_F(CopyFile, ThroughALinkTheLinkStays) {
  support::writeFile(source_, "new");
  support::writeFile(folder_.file("real"), "old");
  std::filesystem::create_symlink("real", target_);
  ASSERT_TRUE(copy());
  EXPECT_TRUE(std::filesystem::is_symlink(target_));
  EXPECT_EQ(support::readFile(folder_.file("real")), "new");
}

TEST_F(CopyFile, FullDiskOrKillKeepsTheOldContent) {
  const std::string old(100, 'o');
  support::writeFile(source_, std::string(30000000, 'n'));
  support::writeFile(target_, old);
  support::OtherProcess limited([&](const auto&) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000000, 1000000};
    setrlimit(RLIMIT_FSIZE, &limit);
    return copy() ? 1 : GetLastError() == ERROR_DISK_FULL ? 0 : 2;
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_EQ(support::readFile(target_), old);
  EXPECT_EQ(entries(), 2U);
  for (int round = 0; round < 30; ++round) {
    support::writeFile(target_, old);
    support::OtherProcess process([&](const auto& channel) {
      channel.tell();
      return copy() ? 0 : 1;
    });
    ASSERT_TRUE(process.awaitReady());
    usleep(static_cast<useconds_t>(round * 400));
    process.kill();
    const std::string now = support::readFile(target_);
    EXPECT_TRUE(now == old || now.size() == 30000000U) << now.size();
  }
}

}  // namespace
