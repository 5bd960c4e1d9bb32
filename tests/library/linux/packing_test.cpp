// Packing of directories with files that only Linux has, and on a full disk.

#include <filesystem/zip.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "library/zip.h"
#include "support/linux/forked_process.h"
#include "support/noise.h"
#include "support/programs.h"

namespace {

using FileSystem::PackReport;
using Reason = PackReport::Reason;

class PackingOnLinux : public Zip {
 protected:
  void SetUp() override {
    support::writeFile(folder_.file("in/a"), "new");
    make({"old"});
    before_ = support::readFile(path_);
    chmod(folder_.name().c_str(), 0777);
  }
  bool pack() {
    report_ = {};
    return FileSystem::packFolder(in_.c_str(), path_.c_str(), {}, report_);
  }
  // The path that is reported for a reason; empty if there is none.
  std::string reported(Reason reason) const {
    for (const PackReport::File& file : report_.files) {
      if (file.reason == reason) return file.path;
    }
    return {};
  }
  bool isUnchanged() const { return support::readFile(path_) == before_; }

  PackReport report_;
  std::string before_;
};

// The size is known before a byte is read: this would take minutes.
TEST_F(PackingOnLinux, LargeFile) {
  const std::string large = folder_.file("in/z");
  support::writeFile(large, "");
  ASSERT_EQ(truncate(large.c_str(), off_t{5} << 30), 0);
  EXPECT_FALSE(pack());
  EXPECT_EQ(reported(Reason::TooLarge), in_ + "\\z");
  EXPECT_TRUE(isUnchanged());
  // The entries before it are in the archive.
  EXPECT_FALSE(FRT_ZIP_FOLDER(in_.c_str(), path_.c_str()));
  EXPECT_EQ(support::run(folder_.path(), "7z t a.zip"), 0);
  EXPECT_EQ(readable().exist("old"), 0);
}

TEST_F(PackingOnLinux, LongPaths) {
  std::string deep = "in";
  for (int i = 0; i < 60; ++i) deep += "/level-" + std::to_string(i);
  support::writeFile(folder_.file(deep + "/file"), "");
  EXPECT_FALSE(pack());
  const std::string path = reported(Reason::PathTooLong);
  EXPECT_TRUE(path.ends_with("level-58\\level-59\\file")) << path;
  EXPECT_TRUE(isUnchanged());
}

TEST_F(PackingOnLinux, SpecialFilesAreLeftOut) {
  ASSERT_EQ(support::run(folder_.path(), "mkfifo in/fifo && ln -s nothing in/link"), 0);
  EXPECT_TRUE(pack());
  EXPECT_EQ(report_.files.size(), 2U);
  EXPECT_FALSE(reported(Reason::NotAFile).empty());
  EXPECT_EQ(names(), Names{"a"});
}

TEST_F(PackingOnLinux, UnreadableDirectory) {
  ASSERT_EQ(
      support::run(folder_.path(), "mkdir in/private && chmod 0 in/private && chmod a+rw a.zip"),
      0);
  support::ForkedProcess unprivileged([&](const auto&) {
    if (geteuid() == 0 && (setgid(1001) != 0 || setuid(1001) != 0)) return 2;
    return !pack() && reported(Reason::Unreadable) == in_ + "\\private\\" ? 1 : 0;
  });
  EXPECT_EQ(unprivileged.wait(), 1);
  EXPECT_TRUE(isUnchanged());
  chmod(folder_.file("in/private").c_str(), 0700);
}

TEST_F(PackingOnLinux, FullDisk) {
  support::writeFile(folder_.file("in/large"), support::noise(5 << 20));
  const auto within2MB = [&](const auto& work) {
    support::ForkedProcess limited([&](const auto&) {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{2 << 20, 2 << 20};
      setrlimit(RLIMIT_FSIZE, &limit);
      return work() ? 1 : 0;
    });
    return limited.wait();
  };
  EXPECT_EQ(within2MB([&] { return !pack() && reported(Reason::NotWritten) == path_; }), 1);
  EXPECT_TRUE(isUnchanged());
  EXPECT_EQ(within2MB([&] { return FRT_ZIP_FOLDER(in_.c_str(), path_.c_str()); }), 0);
  EXPECT_TRUE(isUnchanged());
}

}  // namespace
