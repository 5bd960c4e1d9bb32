// Files under names in another letter case, in a directory that ignores it.

#include <fcntl.h>
#include <filesystem/access.h>
#include <filesystem/enumeration.h>
#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace {

// A directory of its own, empty and without regard to letter case: in the one that
// VESK_CASEFOLD names, or on a tmpfs with the option casefold, which Linux has
// since 6.13 and which only the superuser mounts.
class Casefold : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* const given = std::getenv("VESK_CASEFOLD")) {
      path_ = std::string(given) + "/vesk-casefold-test";
      std::filesystem::remove_all(path_);
      std::filesystem::create_directory(path_);
      return;
    }
    isMounted_ = mount("none", folder_.path().c_str(), "tmpfs", 0, "casefold") == 0;
    if (!isMounted_) GTEST_SKIP() << "no tmpfs with the option casefold";
    path_ = folder_.file("folded");
    std::filesystem::create_directory(path_);
    const int descriptor = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    const int flags = FS_CASEFOLD_FL;
    EXPECT_EQ(ioctl(descriptor, FS_IOC_SETFLAGS, &flags), 0);
    close(descriptor);
  }
  void TearDown() override {
    std::filesystem::remove_all(path_);
    if (isMounted_) umount(folder_.path().c_str());
  }
  std::string at(const std::string& name) const { return path_ + '/' + name; }
  std::ptrdiff_t entries() const {
    return std::distance(std::filesystem::directory_iterator(path_), {});
  }

  support::TemporaryFolder folder_;
  bool isMounted_ = false;
  std::string path_;
};

TEST_F(Casefold, NamesInAnyCaseAreOneFile) {
  using namespace FileSystem;
  support::writeFile(at("Sub/Data.TXT"), "content");
  const std::string other = at("sUB/dATA.txt");
  EXPECT_EQ(FileExists(other.c_str()), 1);
  EXPECT_EQ(FolderExists(at("SUB").c_str()), 1);
  EXPECT_EQ(fileTime(other), fileTime(at("Sub/Data.TXT")));
  std::vector<std::string> found;
  EXPECT_EQ(EnumFilesWithPath(found, (at("SUB") + "\\").c_str(), "*.txt", false), 1U);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_STRCASEEQ(found[0].c_str(), (at("SUB") + "\\Data.TXT").c_str());
  EXPECT_EQ(EnsurePathExists(at("sub").c_str()), 1);
  EXPECT_EQ(entries(), 1);

  FileStream stream(other.c_str(), 2);
  ASSERT_TRUE(stream.is_open());
  EXPECT_EQ(IsFileLockedWrite(at("SUB/DATA.TXT").c_str()), 1);
  EXPECT_EQ(TestOpen(at("SUB/DATA.TXT").c_str(), FileSystem::kAccessReadWrite), 1);
}

TEST_F(Casefold, CopiesMeetTheExistingName) {
  support::writeFile(at("A.txt"), "old");
  support::writeFile(folder_.file("a.TXT"), "new");
  const std::string source = folder_.file("a.TXT");
  EXPECT_EQ(FileSystem::CopyFileA(source.c_str(), at("").c_str(), FileSystem::kCopyIfMissing), 0);
  EXPECT_NE(FileSystem::CopyFileA(source.c_str(), at("").c_str(), FileSystem::kCopyIfExisting), 0);
  EXPECT_EQ(support::readFile(at("A.txt")), "new");
  EXPECT_EQ(entries(), 1);
  // A copy to its own name.
  EXPECT_EQ(FileSystem::CopyFileA(at("a.TXT").c_str(), at("").c_str(), FileSystem::kCopyAlways), 0);
  EXPECT_EQ(support::readFile(at("A.txt")), "new");
}

TEST_F(Casefold, ArchivesUnderAnotherName) {
  ZipArchive archive;
  ASSERT_NE(archive.create(at("Archive.zip").c_str(), 1), 0);
  for (const char* name : {"first", "second"}) {
    ASSERT_NE(archive.insert(std::vector<unsigned char>(100, 'x'), name, "", 1), 0);
  }
  archive.close();
  ASSERT_NE(archive.open(at("aRCHIVE.ZIP").c_str(), FileSystem::kAccessReadWrite), 0);
  // Held without sharing, under whatever name.
  EXPECT_EQ(FileSystem::FileExists(at("ARCHIVE.zip").c_str()), 0);
  EXPECT_NE(archive.remove("first"), 0);
  archive.close();
  EXPECT_EQ(entries(), 1);
  std::vector<std::string> names;
  ASSERT_NE(archive.open(at("archive.ZIP").c_str(), FileSystem::kAccessRead), 0);
  archive.enumerate(names);
  EXPECT_EQ(names, std::vector<std::string>{"second"});
}

}  // namespace
