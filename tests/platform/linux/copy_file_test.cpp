// Copies: permissions, owners, times and links.

#include <fcntl.h>
#include <spawn.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>
#include <vector>

#include "platform/linux/metadata/write_time.h"
#include "platform/linux/opening/descriptor.h"
#include "support/folder_test.h"
#include "support/open_file.h"

namespace {

class CopyingOnLinux : public support::FolderTest {
 protected:
  bool copy() const { return CopyFileA(source_.c_str(), target_.c_str(), FALSE) != FALSE; }

  std::string source_ = folder_.file("source");
  std::string target_ = folder_.file("target");
};

TEST_F(CopyingOnLinux, ModesAreTheTargetsOrTheSources) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
  support::writeFile(source_, "new");
  const mode_t before = umask(0);
  struct {
    const char* what;
    mode_t source, target, expected;
  } const cases[] = {
      {"new", 06750, 0, 0750},
      {"replaced", 06750, 06604, 0604},
      {"replaced, from a read-only one", 0550, 06604, 0404},
      {"overwritten, from a read-only one", 0550, 06604, 0404},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(target_);
    if (c.target != 0) support::writeFile(target_, "old");
    if (std::string(c.what).starts_with("overwritten")) {
      std::filesystem::create_hard_link(target_, folder_.file("link"));
    }
    chmod(source_.c_str(), c.source);
    chmod(target_.c_str(), c.target);
    EXPECT_TRUE(copy());
    struct stat status {};
    EXPECT_EQ(stat(target_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, c.expected);
  }
  umask(before);
}

TEST_F(CopyingOnLinux, NeverReplacesAProgramThatRuns) {
  support::writeFile(source_, "new");
  std::filesystem::copy_file("/bin/sleep", target_);
  std::string name = "sleep";
  std::string seconds = "100";
  char* const arguments[] = {name.data(), seconds.data(), nullptr};
  pid_t program = 0;
  ASSERT_EQ(posix_spawn(&program, target_.c_str(), nullptr, nullptr, arguments, environ), 0);
  EXPECT_FALSE(copy());
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  kill(program, SIGKILL);
  waitpid(program, nullptr, 0);
  EXPECT_NE(support::readFile(target_), "new");
}

TEST_F(CopyingOnLinux, ThroughALinkTheLinkStays) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  support::writeFile(source_, "new");
  write("real", "old");
  std::filesystem::create_symlink("real", target_);
  ASSERT_TRUE(copy());
  EXPECT_TRUE(std::filesystem::is_symlink(target_));
  EXPECT_EQ(read("real"), "new");
  // Onto itself, also by way of a link.
  std::filesystem::create_symlink(source_, folder_.file("soft"));
  std::filesystem::create_hard_link(source_, folder_.file("hard"));
  for (const char* name : {"source", "soft", "hard"}) {
    EXPECT_FALSE(CopyFileA(source_.c_str(), folder_.file(name).c_str(), FALSE)) << name;
    EXPECT_EQ(support::readFile(source_), "new");
  }
}

// The file that a dangling link leads to is created, unless the creation is exclusive.
TEST_F(CopyingOnLinux, CreatesTheFileOfADanglingLink) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  support::writeFile(source_, "new");
  chmod(source_.c_str(), 0440);
  std::filesystem::create_symlink("real", folder_.file("middle"));
  std::filesystem::create_symlink("middle", target_);
  EXPECT_FALSE(CopyFileA(source_.c_str(), target_.c_str(), TRUE));
  EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
  ASSERT_TRUE(copy());
  EXPECT_TRUE(std::filesystem::is_symlink(target_));
  EXPECT_EQ(read("real"), "new");
  EXPECT_NE(GetFileAttributesA(target_.c_str()) & FILE_ATTRIBUTE_READONLY, 0U);

  std::filesystem::remove(target_);
  std::filesystem::create_symlink("missing/real", target_);
  EXPECT_FALSE(copy());
}

// Holes before, between and after the data of a source. A copy has as few blocks, and one that is
// written over held content has zeros there.
TEST_F(CopyingOnLinux, HolesStayHoles) {
  constexpr off_t kHole = 1 << 20;
  constexpr off_t kSize = 3 * kHole;
  constexpr blkcnt_t kFewBlocks = kHole / 512;
  constexpr off_t kEnd = kSize - 5;
  const std::vector<std::vector<off_t>> cases = {
      {0}, {0, kHole, kEnd}, {kHole + 70000}, {kEnd}, {}};
  for (const std::vector<off_t>& data : cases) {
    std::string expected(kSize, '\0');
    std::ofstream out(source_, std::ios::binary);
    for (const off_t position : data) {
      out.seekp(position) << "bytes";
      expected.replace(static_cast<std::size_t>(position), 5, "bytes");
    }
    out.close();
    ASSERT_EQ(truncate(source_.c_str(), kSize), 0);
    struct stat source {};
    ASSERT_EQ(stat(source_.c_str(), &source), 0);
    std::filesystem::remove(target_);
    ASSERT_TRUE(copy());
    EXPECT_TRUE(support::readFile(target_) == expected);
    struct stat target {};
    ASSERT_EQ(stat(target_.c_str(), &target), 0);
    // A file system without holes has all blocks.
    EXPECT_TRUE(target.st_blocks < kFewBlocks || source.st_blocks >= kFewBlocks);

    support::writeFile(target_, std::string(kSize + 1, 'o'));
    const platform::FileHandle holder = support::openFile(target_, GENERIC_READ, 7);
    ASSERT_TRUE(copy());
    EXPECT_TRUE(support::readFile(target_) == expected);
  }
}

// FAT stores even seconds, exFAT hundredths of one. A copy that was older would be copied again.
TEST_F(CopyingOnLinux, TimesAreNeverRoundedDown) {
  support::writeFile(target_, "x");
  const platform::native::Descriptor file(open(target_.c_str(), O_RDWR | O_CLOEXEC));
  struct stat status {};
  ASSERT_EQ(fstat(file.get(), &status), 0);
  for (const struct timespec time :
       {timespec{1600000000, 0}, {1600000001, 0}, {1600000001, 5000}}) {
    ASSERT_TRUE(platform::native::setWriteTime(file.get(), time, status.st_mtim));
    struct stat now {};
    ASSERT_EQ(fstat(file.get(), &now), 0);
    const auto stored = std::pair(now.st_mtim.tv_sec, now.st_mtim.tv_nsec);
    EXPECT_GE(stored, std::pair(time.tv_sec, time.tv_nsec));
    EXPECT_LE(stored, std::pair(time.tv_sec + 2, time.tv_nsec));
  }
}

// A target that cannot be replaced is overwritten, and keeps its other names.
TEST_F(CopyingOnLinux, NeedsOnlyTheRightToWriteTheTarget) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
  constexpr uid_t kWriter = 65534;
  support::writeFile(source_, "new");
  const std::string link = folder_.file("link");
  for (const bool isLinked : {true, false}) {
    SCOPED_TRACE(isLinked ? "several names" : "folder that is not writable");
    support::writeFile(target_, "something old");
    std::filesystem::remove(link);
    if (isLinked) std::filesystem::create_hard_link(target_, link);
    const bool isSuperuser = chown(target_.c_str(), kWriter, kWriter) == 0;
    chmod(folder_.path().c_str(), isLinked ? 0777 : 0555);
    struct stat before {};
    stat(target_.c_str(), &before);
    bool isCopied = false;
    // The changes affect this thread alone.
    std::thread([&] {
      if (isSuperuser) {
        setfsgid(kWriter);
        setfsuid(kWriter);
      }
      isCopied = copy();
    }).join();
    EXPECT_TRUE(isCopied);
    chmod(folder_.path().c_str(), 0700);
    struct stat after {};
    stat(target_.c_str(), &after);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(support::readFile(target_), "new");
    std::filesystem::remove(target_);
  }
}

}  // namespace
