// Packing of directories with files that only Linux has, and on a full disk.

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "library/reports.h"
#include "library/zip.h"
#include "support/linux/forked_process.h"
#include "support/noise.h"

namespace {

using namespace FileSystem;

class PackingOnLinux : public Zip {
 protected:
  void SetUp() override {
    write("in/a", "new");
    make({"old"});
    before_ = support::readFile(path_);
    chmod(folder_.name().c_str(), 0777);
  }
  bool pack() {
    report_ = packFolder(in_.c_str(), path_.c_str());
    return report_.reason == Reason::None;
  }
  bool isUnchanged() const { return support::readFile(path_) == before_; }

  Report report_;
  std::string before_;
};

TEST_F(PackingOnLinux, FullDisk) {
  write("in/large", support::noise(5 << 20));
  constexpr rlim_t kLimit = 2 << 20;
  EXPECT_TRUE(
      support::withinSize(kLimit, [&] { return !pack() && report_.reason == Reason::DiskFull; }));
  EXPECT_TRUE(isUnchanged());
  EXPECT_FALSE(
      support::withinSize(kLimit, [&] { return FRT_ZIP_FOLDER(in_.c_str(), path_.c_str()); }));
  EXPECT_TRUE(isUnchanged());
}

TEST_F(PackingOnLinux, UnreadableDirectory) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
  shell("mkdir in/private && chmod 0 in/private && chmod a+rw a.zip");
  support::ForkedProcess unprivileged([&](const auto&) {
    if (geteuid() == 0 && (setgid(1001) != 0 || setuid(1001) != 0)) return 2;
    const Reasons expected{{"private\\", Reason::NoPermission}};
    return !pack() && reasonsOf(report_) == expected ? 1 : 0;
  });
  EXPECT_EQ(unprivileged.wait(), 1);
  EXPECT_TRUE(isUnchanged());
  chmod(folder_.file("in/private").c_str(), 0700);
}

// An archive of a colleague, which the group may write. Only the superuser can give a file to him,
// so the file stays.
TEST_F(PackingOnLinux, AColleaguesArchiveKeepsItsFile) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no owners here";
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser";
  constexpr uid_t kOwner = 1002;
  constexpr uid_t kCaller = 1001;
  constexpr gid_t kGroup = 2000;
  const auto asCaller = [&](const std::function<bool()>& work) {
    support::ForkedProcess caller([&](const auto&) {
      if (setgroups(0, nullptr) != 0 || setgid(kGroup) != 0 || setuid(kCaller) != 0) return 2;
      return work() ? 0 : 1;
    });
    return caller.wait();
  };
  const std::string source = in_ + "/a";
  const std::tuple<const char*, std::function<bool()>, Names> kRows[] = {
      {"remove", [&] { return writable().remove("x") == 1; }, {"y", "z"}},
      {"replace",
       [&] { return writable().insert(bytesOf("new"), "x", "", 1) == 1; },
       {"y", "z", "x"}},
      {"list",
       [&] {
         ArchiveChange change;
         change.insertFile(source, "x");
         change.insertFile(source, "n");
         return static_cast<bool>(change.apply(path_.c_str()));
       },
       {"y", "z", "x", "n"}},
      {"list with a missing file",
       [&] {
         ArchiveChange change;
         change.insertFile(source, "x");
         change.insertFile("none", "y");
         return change.apply(path_.c_str()).reason == Reason::Missing;
       },
       {"x", "y", "z"}},
      {"remove all",
       [&] {
         ArchiveChange change;
         for (const char* name : {"x", "y", "z"}) change.remove(name);
         return static_cast<bool>(change.apply(path_.c_str()));
       },
       {}},
      {"create", [&] { return ZipArchive().create(path_.c_str(), 1) == 1; }, {}},
      {"export", [&] { return FRT_ZIP_FOLDER(in_.c_str(), path_.c_str()); }, {"a"}},
      {"pack", [&] { return pack(); }, {".\\", "a"}},
      {"nothing left",
       [&] {
         ZipArchive archive = writable();
         return archive.remove("x") == 1 && archive.remove("y") == 1 && archive.remove("z") == 0;
       },
       {"z"}},
  };
  for (const auto& [name, work, left] : kRows) {
    std::filesystem::remove(path_);
    make({"x", "y", "z"});
    ASSERT_EQ(chown(path_.c_str(), kOwner, kGroup), 0);
    ASSERT_EQ(chmod(path_.c_str(), 0660), 0);
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat(path_.c_str(), &before), 0);
    EXPECT_EQ(asCaller(work), 0) << name;
    ASSERT_EQ(stat(path_.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino) << name;
    EXPECT_EQ(after.st_uid, kOwner) << name;
    EXPECT_EQ(after.st_mode, before.st_mode) << name;
    EXPECT_EQ(names(), left) << name;
    if (!left.empty()) {
      shell("7z t a.zip");
    }
    EXPECT_EQ(writable().insert(bytesOf("more"), "more", "", 0), 1) << name;
  }
}

// A file with another name is changed in place, whose bytes are reused for the new archive.
TEST_F(PackingOnLinux, AFileInPlaceDoesNotGrow) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  const std::string fresh = folder_.file("fresh.zip");
  const auto packFresh = [&] { return static_cast<bool>(packFolder(in_.c_str(), fresh.c_str())); };
  write("in/large", support::noise(1200000));
  ASSERT_TRUE(pack() && packFresh());
  std::filesystem::create_hard_link(path_, folder_.file("second"));
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(pack());
    EXPECT_TRUE(support::readFile(path_) == support::readFile(fresh)) << i;
  }
  // A larger archive finds enough bytes to reuse at the second time.
  write("in/more", support::noise(100000));
  ASSERT_TRUE(pack() && packFresh());
  EXPECT_LT(std::filesystem::file_size(path_), 2 * std::filesystem::file_size(fresh));
  EXPECT_TRUE(contentOf("more") == support::noise(100000));
  EXPECT_TRUE(pack());
  EXPECT_TRUE(support::readFile(path_) == support::readFile(fresh));

  EXPECT_EQ(ZipArchive().create(path_.c_str(), 1), 1);
  EXPECT_EQ(std::filesystem::file_size(path_), 22U);
  constexpr int kEmpty = 1;
  EXPECT_EQ(support::run(folder_.path(), "unzip -qq a.zip"), kEmpty);
  shell("7z t a.zip && python3 -m zipfile -t a.zip");
  EXPECT_EQ(std::filesystem::hard_link_count(path_), 2U);
}

// A slash alone is the root, and not the beginning of a server's name.
TEST_F(PackingOnLinux, TheRootIsAFolder) {
  EXPECT_NE(GetFileAttributesA("/\\proc"), INVALID_FILE_ATTRIBUTES);
  const std::string target = path_.substr(1);
  make({target});
  std::filesystem::copy_file(path_, folder_.file("b.zip"));
  EXPECT_TRUE(FRT_UNZIP_FILE(folder_.file("b.zip").c_str(), "/"));
  EXPECT_EQ(support::readFile(path_), target);
}

}  // namespace
