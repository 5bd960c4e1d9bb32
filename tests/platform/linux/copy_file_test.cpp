// Copies: modes, links, and a disk that is full.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string>

#include "platform/win32.h"
#include "support/linux/forked_process.h"
#include "support/temporary_folder.h"

namespace {

class CopyingOnLinux : public testing::Test {
 protected:
  bool copy() const { return CopyFileA(source_.c_str(), target_.c_str(), FALSE) != FALSE; }

  support::TemporaryFolder folder_;
  std::string source_ = folder_.file("source");
  std::string target_ = folder_.file("target");
};

TEST_F(CopyingOnLinux, ModesAreTheTargetsOrTheSources) {
  for (const bool exists : {false, true}) {
    support::writeFile(source_, "new");
    chmod(source_.c_str(), 0750);
    if (exists) {
      support::writeFile(target_, "old");
      chmod(target_.c_str(), 0604);
    }
    ASSERT_TRUE(copy());
    struct stat status {};
    ASSERT_EQ(stat(target_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, exists ? 0604U : 0750U);
  }
}

TEST_F(CopyingOnLinux, ThroughALinkTheLinkStays) {
  support::writeFile(source_, "new");
  support::writeFile(folder_.file("real"), "old");
  std::filesystem::create_symlink("real", target_);
  ASSERT_TRUE(copy());
  EXPECT_TRUE(std::filesystem::is_symlink(target_));
  EXPECT_EQ(support::readFile(folder_.file("real")), "new");
  // Onto itself by way of a link.
  std::filesystem::create_symlink(source_, folder_.file("soft"));
  EXPECT_FALSE(CopyFileA(source_.c_str(), folder_.file("soft").c_str(), FALSE));
  EXPECT_EQ(support::readFile(source_), "new");
}

TEST_F(CopyingOnLinux, FullDiskKeepsTheOldContent) {
  const std::string old(100, 'o');
  support::writeFile(source_, std::string(30000000, 'n'));
  support::writeFile(target_, old);
  support::ForkedProcess limited([&](const auto&) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000000, 1000000};
    setrlimit(RLIMIT_FSIZE, &limit);
    return copy() ? 1 : GetLastError() == ERROR_DISK_FULL ? 0 : 2;
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_EQ(support::readFile(target_), old);
  EXPECT_EQ(folder_.entries(), 2U);
}

}  // namespace
