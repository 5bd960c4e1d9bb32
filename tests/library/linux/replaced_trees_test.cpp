// Copies of trees over existing files, whose new versions wait for a common commit.

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "library/host_trees.h"
#include "support/linux/forked_process.h"
#include "support/linux/left_over.h"

namespace {

using namespace FileSystem;
namespace fs = std::filesystem;

class ReplacedTrees : public HostTrees {
 protected:
  ReplacedTrees() {
    for (int i = 0; i < kFiles; ++i) write("in/" + std::to_string(i), "new");
  }

  // Creates the files that are to be replaced.
  void restore() const {
    fs::remove_all(path("out"));
    for (int i = 0; i < kFiles; ++i) write("out/" + std::to_string(i), "old");
  }
  // Copies the tree, and runs `work` when the second file is begun. It receives the name of the
  // first, whose new version waits.
  Report copyAnd(const std::function<void(const std::string& first)>& work) const {
    std::string first;
    bool isRun = false;
    return copy(Options().setProgress([&](const Progress& progress) {
      if (progress.filesDone == 0) first = progress.name;
      if (progress.filesDone == 1 && !isRun) work(first);
      isRun = progress.filesDone == 1;
      return true;
    }));
  }

  static constexpr int kFiles = 20;
};

// What another program does with a target whose new version waits.
TEST_F(ReplacedTrees, TakeOtherProgramsChangesIntoAccount) {
  struct Case {
    const char* change;
    std::function<void(const fs::path& target)> make;
    mode_t mode = 0644;
    nlink_t names = 1;
  };
  const Case cases[] = {
      {"nothing", [](const fs::path&) {}},
      {"permissions", [](const fs::path& target) { chmod(target.c_str(), 0600); }, 0600},
      {"deleted", [](const fs::path& target) { fs::remove(target); }},
      {"replaced",
       [](const fs::path& target) {
         support::writeFile(target.string() + ".other", "other");
         fs::rename(target.string() + ".other", target);
       }},
      {"second name",
       [](const fs::path& target) { fs::create_hard_link(target, target.string() + ".link"); },
       0644, 2},
  };
  if (!support::fileSystem().commonCommit) GTEST_SKIP() << "none waits here";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.change);
    restore();
    std::string target;
    EXPECT_TRUE(copyAnd([&](const std::string& first) {
      target = path("out/" + first);
      c.make(target);
    }));
    EXPECT_EQ(support::readFile(target), "new");
    struct stat status {};
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, c.mode);
    EXPECT_EQ(status.st_nlink, c.names);
  }
}

TEST_F(ReplacedTrees, AreNotHeldWhileTheyWait) {
  restore();
  EXPECT_TRUE(copyAnd([&](const std::string& first) {
    EXPECT_TRUE(support::openFile(path("out/" + first), GENERIC_READ | GENERIC_WRITE));
  }));
}

TEST_F(ReplacedTrees, SayWhichFileIsInUseInTheEnd) {
  if (!support::fileSystem().commonCommit) GTEST_SKIP() << "none waits here";
  restore();
  platform::FileHandle held;
  std::string name;
  const Report report = copyAnd([&](const std::string& first) {
    name = first;
    held = support::openFile(path("out/" + first));
  });
  held.reset();
  Reasons expected;
  for (int i = 0; i < kFiles; ++i) expected[std::to_string(i)] = Reason::None;
  expected[name] = Reason::InUse;
  EXPECT_EQ(reasonsOf(report), expected);
  EXPECT_EQ(read("out/" + name), "old");
}

// The program has the upper half of the descriptors, and nearly all of the lower one is enough.
TEST_F(ReplacedTrees, NeedFewDescriptors) {
  constexpr rlim_t kMost = 40;
  restore();
  EXPECT_TRUE(support::within(RLIMIT_NOFILE, kMost, [&] {
    while (fcntl(STDERR_FILENO, F_DUPFD, static_cast<int>(kMost / 2)) >= 0) continue;
    return static_cast<bool>(copy());
  }));
}

TEST_F(ReplacedTrees, LeaveDescriptorsToTheProgram) {
  constexpr rlim_t kMost = 64;
  restore();
  const auto copies = [&] {
    std::size_t most = 0;
    return copy(Options().setProgress([&](const Progress&) {
             most = std::max(most, support::openDescriptors().size());
             return true;
           })) &&
           most < kMost * 3 / 4;
  };
  EXPECT_TRUE(support::within(RLIMIT_NOFILE, kMost, copies));
}

// All new versions together have no room beside the old ones.
TEST_F(ReplacedTrees, NeedLittleSpace) {
  fs::create_directory(path("out"));
  if (mount("none", path("out").c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP() << "no mount";
  const std::string content(40000, 'c');
  for (int i = 0; i < kFiles; ++i) {
    write("in/" + std::to_string(i), content);
    write("out/" + std::to_string(i), content);
  }
  EXPECT_TRUE(copy());
  umount(path("out").c_str());
}

// What was copied to a folder is read from there, if the folder is copied afterwards.
TEST_F(ReplacedTrees, MayBeInEachOther) {
  write("in/out/x", "2");
  write("in/out/out/x", "3");
  write("in/out/out/out/x", "4");
  EXPECT_EQ(CopyContent(path("in/"), path("in/out/")), kFiles + 3);
  EXPECT_EQ(read("in/out/out/x"), "2");
  EXPECT_EQ(read("in/out/out/out/x"), "2");

  write("base/sub/x", "1");
  write("base/sub/sub/x", "2");
  write("base/x", "0");
  EXPECT_EQ(CopyContent(path("base/sub/"), path("base/")), 2);
  EXPECT_EQ(read("base/x"), "2");
}

}  // namespace
