// Enumeration of links, unusual names, and directories with few permissions.

#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/stat.h>

#include <thread>

#include "library/enumeration.h"

namespace {

using namespace FileSystem;

using EnumerationOnLinux = Enumeration;

TEST_F(EnumerationOnLinux, LinksAreFollowedExceptInCycles) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  make({"real/file", "real/deep/x"});
  std::filesystem::create_directory_symlink(folder_.file("real"), folder_.file("link"));
  std::filesystem::create_directory_symlink(folder_.path(), folder_.file("real/up"));
  std::filesystem::create_symlink(folder_.file("nowhere"), folder_.file("dangling"));
  Names paths;
  EnumFolders(paths, path_, 1);
  EXPECT_EQ(below(paths), (Names{"link\\", "link\\deep\\", "real\\", "real\\deep\\"}));
  paths.clear();
  EnumFilesWithPath(paths, path_, "*", true);
  EXPECT_EQ(below(paths), (Names{"link\\deep\\x", "link\\file", "real\\deep\\x", "real\\file"}));
  // The current directory is a start, too.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  std::vector<FILE_INFORMATION> records;
  EXPECT_EQ(EnumFolders(records, "", 1), 4U);
  EXPECT_EQ(EnumFolders(records, "C:", 1), 4U);
  // What cannot be opened is found under a bare name, but not with a drive.
  EXPECT_EQ(FileExists("C:real"), 0);
  std::filesystem::current_path(before);
}

// A backslash in a name is not a separator, and the path that is listed opens the file.
TEST_F(EnumerationOnLinux, BackslashInANameComesBack) {
  if (!support::fileSystem().anyName) GTEST_SKIP() << "no such names here";
  make({"sub/a\\b"});
  Names paths;
  ASSERT_EQ(EnumFilesWithPath(paths, path_, "*", true), 1U);
  EXPECT_EQ(below(paths), Names{"sub\\a\uF05Cb"});
  EXPECT_EQ(FileExists(paths[0].c_str()), 1);
  // No path can name a file whose name has that character itself, or becomes too long with it.
  make({"sub/a\uF05C"});
  for (std::size_t length = 90; length < 110; ++length) {
    support::writeFile(folder_.file("sub/" + std::string(length, '\\')), "");
  }
  EXPECT_EQ(EnumFiles(paths, (text_ + "sub\\").c_str(), "*"), 1U);
}

TEST_F(EnumerationOnLinux, DirectoryThatCannotBeSearched) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
  make({"listed/sub/file", "listed/file"});
  std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
  std::filesystem::permissions(folder_.file("listed"), std::filesystem::perms(0444));
  Names paths;
  std::vector<FILE_INFORMATION> records;
  // Permissions bind all users but the superuser. The change affects this thread alone.
  std::thread([&] {
    constexpr uid_t kOtherUser = 65534;
    setfsuid(kOtherUser);
    EnumFolders(paths, path_, 1);
    EnumFolders(records, path_, 1);
    EXPECT_EQ(EnumFilesWithPath(paths, path_, "*", true), 0U);
    // An empty directory is deleted even if it cannot be read.
    const std::string unreadable = folder_.file("unreadable");
    std::filesystem::create_directory(unreadable);
    std::filesystem::permissions(unreadable, std::filesystem::perms(0300));
    eraseOldFile(text_, 4000000000U);
    EXPECT_FALSE(support::exists(unreadable));
  }).join();
  std::filesystem::permissions(folder_.file("listed"), std::filesystem::perms::owner_all);
  EXPECT_EQ(below(paths), (Names{"listed\\", "listed\\sub\\"}));
  ASSERT_EQ(records.size(), 2U);
  EXPECT_STREQ(records[1].cFileName, "listed\\sub");
}

TEST_F(EnumerationOnLinux, Names) {
  if (!support::fileSystem().anyName) GTEST_SKIP() << "no such names here";
  // The plain form passes names through extractFilename.
  make({"a.b ", "c:d"});
  Names names;
  EXPECT_EQ(EnumFiles(names, path_, "a*"), 1U);
  EXPECT_EQ(EnumFiles(names, path_, "c:*"), 1U);
  EXPECT_EQ(names, (Names{"a.b", "d"}));

  // A path is cut at 259 bytes and listed if a file has the name that is left.
  make({"long/abcdef"});
  const std::string start = folder_.file("long");
  const std::string padded = start + std::string(255 - start.size(), '/') + '\\';
  names.clear();
  EXPECT_EQ(EnumFilesWithPath(names, padded.c_str(), "*", false), 0U);
  make({"long/abc"});
  EXPECT_EQ(EnumFilesWithPath(names, padded.c_str(), "a*", false), 2U);
  EXPECT_EQ(names, (Names{padded + "abc", padded + "abc"}));
}

TEST_F(EnumerationOnLinux, Times) {
  make({"file"});
  support::setWriteTime(folder_.file("file"), 0);
  std::vector<FILE_INFORMATION> records;
  ASSERT_EQ(EnumFilesWithPath(records, path_, "*"), 1U);
  struct statx status {};
  statx(AT_FDCWD, folder_.file("file").c_str(), 0, STATX_BTIME, &status);
  if ((status.stx_mask & STATX_BTIME) != 0) {
    EXPECT_GT(records[0].ftCreationTime.dwHighDateTime, records[0].ftLastWriteTime.dwHighDateTime);
  }
}

}  // namespace
