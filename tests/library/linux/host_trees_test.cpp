// Trees that a host copies and deletes, with links, permissions and limits.

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "library/host_trees.h"
#include "support/linux/forked_process.h"

namespace {

using namespace FileSystem;

using HostTreesOnLinux = HostTrees;

TEST_F(HostTreesOnLinux, ListingFollowsLinksOnRequest) {
  if (!support::fileSystem().links || !support::fileSystem().fifos) GTEST_SKIP() << "no links here";
  write("in/sub/file", "x");
  shell(
      "mkfifo in/fifo && ln -s none in/dangling && ln -s sub in/link &&"
      " ln -s .. in/sub/cycle");
  const auto list = [&](bool keepsLinks) {
    return listTree(path("in").c_str(), "*", Options().setLinks(keepsLinks).setFolders(false));
  };
  EXPECT_EQ(reasonsOf(list(false)), (Reasons{{"fifo", Reason::NotAFile},
                                             {"dangling", Reason::NotAFile},
                                             {"link\\file", Reason::None},
                                             {"sub\\file", Reason::None}}));
  std::set<std::string> links;
  for (const ItemResult& item : list(true).items) {
    if (item.isLink) links.insert(item.name);
  }
  EXPECT_EQ(links, (std::set<std::string>{"dangling", "link", "sub\\cycle"}));
}

TEST_F(HostTreesOnLinux, CopySaysWhatIsNoFile) {
  if (!support::fileSystem().links || !support::fileSystem().fifos) GTEST_SKIP() << "no links here";
  write("in/sub/file", "x");
  write("in/target", "x");
  shell(
      "mkfifo in/fifo && ln -s none in/dangling && ln -s sub in/link &&"
      " ln -s .. in/sub/cycle && mkdir out && mkfifo out/target");
  EXPECT_EQ(reasonsOf(copy()), (Reasons{{"fifo", Reason::NotAFile},
                                        {"dangling", Reason::NotAFile},
                                        {"target", Reason::NotAFile},
                                        {"link\\file", Reason::None},
                                        {"sub\\file", Reason::None}}));
}

// The callback hears of the file when the folder beside it is listed, but not open.
TEST_F(HostTreesOnLinux, CopyDoesNotFollowALinkThatReplacesAFolder) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  write("in/sub/file", "x");
  write("in/sub/deep/listed", "x");
  write("elsewhere/secret", "x");
  copy(Options().setProgress([&](const Progress& progress) {
    if (progress.name != "sub\\file") return true;
    std::filesystem::remove_all(path("in/sub/deep"));
    std::filesystem::create_directory_symlink(path("elsewhere"), path("in/sub/deep"));
    return true;
  }));
  EXPECT_TRUE(exists("out/sub/file"));
  EXPECT_FALSE(exists("out/sub/deep/secret"));
}

TEST_F(HostTreesOnLinux, SaysWhatHasNoName) {
  if (!support::fileSystem().anyName) GTEST_SKIP() << "no such names here";
  write("in/a\uF05C", "x");
  write("in/b\uF05C/below", "x");
  write("in/4\\5", "x");
  EXPECT_EQ(reasonsOf(copy()), (Reasons{{"a\uF05C", Reason::None},
                                        {"b\uF05C", Reason::Failed},
                                        {"4\uF05C5", Reason::None}}));
  EXPECT_TRUE(deleteTree(path("in").c_str()));
  EXPECT_FALSE(exists("in"));
}

// Runs as a user who may not do everything.
TEST_F(HostTreesOnLinux, SaysWhatIsNotPermitted) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
  if (geteuid() != 0) GTEST_SKIP() << "needs another user's files";
  write("in/unreadable", "x");
  write("in/private/file", "x");
  write("locked/file", "x");
  shell(
      "chmod 0 in/unreadable in/private && mkdir -m 777 out && chmod 755 . &&"
      " chmod 777 in && chmod 755 locked && mkdir -m 1777 sticky &&"
      " touch -d '9 days ago' locked/file sticky/others sticky/own &&"
      " chown 1001 sticky/own");
  constexpr uid_t kUser = 1001;
  support::ForkedProcess user([&](const auto&) {
    if (setgid(kUser) != 0 || setuid(kUser) != 0) return 1;
    const Reasons expected{{"unreadable", Reason::NoPermission}, {"private", Reason::NoPermission}};
    if (reasonsOf(copy()) != expected) return 2;
    if (copyTree(path("in").c_str(), path("locked").c_str()).reason != Reason::NoPermission) {
      return 3;
    }
    const Reasons kept{{"file", Reason::NoPermission}};
    if (reasonsOf(deleteTree(path("locked").c_str())) != kept) return 4;
    if (copyTree(path("in/private").c_str(), path("out").c_str()).reason != Reason::NoPermission) {
      return 5;
    }
    const Reasons old{{"locked\\file", Reason::NoPermission},
                      {"in\\private", Reason::NoPermission},
                      {"sticky\\others", Reason::NoPermission},
                      {"sticky\\own", Reason::None}};
    if (reasonsOf(findOldFiles(folder_.name().c_str(), 7)) != old) return 6;
    Reasons deleted = reasonsOf(deleteOldFiles(folder_.name().c_str(), 7));
    deleted.erase("out");  // an empty folder
    if (deleted != old) return 7;
    return 0;
  });
  EXPECT_EQ(user.wait(), 0);
}

TEST_F(HostTreesOnLinux, CopySaysThatTheDiskIsFull) {
  write("in/large", std::string(100000, 'l'));
  write("in/small", "s");
  write("out/large", "old");
  const Reasons expected{{"large", Reason::DiskFull}, {"small", Reason::None}};
  EXPECT_TRUE(support::withinSize(50000, [&] { return reasonsOf(copy()) == expected; }));
  EXPECT_EQ(read("out/large"), "old");
  shell("test $(ls -A out | wc -l) = 2");
}

// Reading the memory of a process from its first byte on is an error.
TEST_F(HostTreesOnLinux, CopySaysThatAFileCannotBeRead) {
  const Report report = copyFile("/proc/self/mem", path("out").c_str());
  EXPECT_EQ(reasonsOf(report), (Reasons{{"mem", Reason::ReadFailed}}));
  EXPECT_FALSE(exists("out/mem"));
}

TEST_F(HostTreesOnLinux, CopySaysThatAPathIsTooLong) {
  std::string deep;
  while (path("in/" + deep).size() < 3900) deep += std::string(100, 'd') + '/';
  write("in/" + deep + "file", "x");
  const Report report = copyTree(path("in").c_str(), path(std::string(200, 't')).c_str());
  EXPECT_EQ(reasonsOf(report)[shown(deep) + "file"], Reason::PathTooLong);
}

// A file that others hold and share is overwritten to its end.
TEST_F(HostTreesOnLinux, CancelledCopyCompletesAFileInPlace) {
  const std::string large(3 << 20, 'n');
  write("in/held", large);
  write("out/held", "old");
  const platform::FileHandle held = support::openFile(path("out/held"), GENERIC_READ, 7);
  bool isCancelled = false;
  const Report report = copy(Options().setProgress([&](const Progress& progress) {
    isCancelled = isCancelled || progress.bytesDone > 0;
    return !isCancelled;
  }));
  EXPECT_EQ(report.reason, Reason::Cancelled);
  EXPECT_EQ(reasonsOf(report), (Reasons{{"held", Reason::None}}));
  EXPECT_TRUE(read("out/held") == large);
}

TEST_F(HostTreesOnLinux, ProgressCountsHoles) {
  if (!support::fileSystem().largeFiles) GTEST_SKIP() << "no holes here";
  shell(
      "mkdir in && truncate -s 50M in/sparse && printf x >>in/sparse &&"
      " truncate -s 80M in/sparse && printf x >in/begun && truncate -s 20M in/begun");
  std::uint64_t done = 0;
  EXPECT_TRUE(copy(Options().setProgress([&](const Progress& progress) {
    done = progress.bytesDone;
    return true;
  })));
  EXPECT_EQ(done, std::uint64_t{100} << 20);
  shell("cmp in/sparse out/sparse && cmp in/begun out/begun");
}

TEST_F(HostTreesOnLinux, DeletionStaysInItsTree) {
  if (!support::fileSystem().links || !support::fileSystem().fifos) GTEST_SKIP() << "no links here";
  write("elsewhere/kept", "x");
  shell(
      "mkdir tree && ln -s ../elsewhere tree/link && ln -s elsewhere top &&"
      " ln -s /nowhere tree/dangling && ln -s .. tree/up && mkfifo tree/fifo");
  EXPECT_EQ(reasonsOf(deleteTree(path("tree").c_str())), (Reasons{{"link", Reason::None},
                                                                  {"dangling", Reason::None},
                                                                  {"up", Reason::None},
                                                                  {"fifo", Reason::None}}));
  EXPECT_TRUE(deleteTree(path("top\\").c_str()));
  shell("test ! -e tree && test ! -L top && test -e elsewhere/kept");
}

TEST_F(HostTreesOnLinux, DeletionRefusesTheRootOfADrive) {
  // The library's own function, not that of the platform layer that is linked to the test.
  const auto define =
      reinterpret_cast<decltype(&DefineDosDeviceA)>(dlsym(RTLD_NEXT, "DefineDosDeviceA"));
  ASSERT_NE(define, nullptr);
  write("mapped/sub/file", "x");
  ASSERT_TRUE(define(0, "T:", path("mapped").c_str()));
  for (const char* root : {"T:", "T:\\", "T:\\sub\\..", "t:/"}) {
    EXPECT_EQ(deleteTree(root).reason, Reason::NoPermission) << root;
  }
  EXPECT_TRUE(exists("mapped/sub/file"));
  EXPECT_TRUE(deleteTree("T:\\sub"));
  EXPECT_TRUE(define(DDD_REMOVE_DEFINITION, "T:", nullptr));
}

}  // namespace
