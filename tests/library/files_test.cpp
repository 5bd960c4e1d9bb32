// Probes, and creation and deletion of folders.

#include <filesystem/files.h>

#include "support/folder_test.h"
#include "support/open_file.h"

namespace {

using namespace FileSystem;

constexpr unsigned long kRead = GENERIC_READ;
constexpr unsigned long kReadWrite = kRead | GENERIC_WRITE;

class Files : public support::FolderTest {
 protected:
  std::string path_ = folder_.file("file");
};

TEST_F(Files, Probes) {
  for (const char* name : {"file", "read-only", "shared", "exclusive"}) {
    write(name, "content");
  }
  support::makeReadOnly(folder_.file("read-only"));
  const platform::FileHandle writer =
      support::openFile(folder_.file("shared"), kReadWrite, FILE_SHARE_READ);
  const platform::FileHandle owner = support::openFile(folder_.file("exclusive"));
  struct {
    const char* name;
    int exists, lockedWrite, readOnly, isFolder;
    unsigned long access;
    bool hasTime;
  } const cases[] = {
      {"missing", 0, 1, 1, 0, kReadWrite, false},   {"file", 1, 0, 0, 0, kReadWrite, true},
      {"read-only", 1, 0, 1, 0, kRead, true},       {"shared", 1, 1, 0, 0, kRead, true},
      {"exclusive", 0, 1, 0, 0, kReadWrite, false}, {".", 0, 1, 0, 1, kReadWrite, false},
  };
  for (const auto& c : cases) {
    const std::string path = folder_.text() + c.name;
    EXPECT_EQ(FileExists(path.c_str()), c.exists) << path;
    EXPECT_EQ(IsFileLockedWrite(path.c_str()), c.lockedWrite) << path;
    EXPECT_EQ(IsFileReadOnly(path.c_str()), c.readOnly) << path;
    EXPECT_EQ(FolderExists(path.c_str()), c.isFolder) << path;
    EXPECT_EQ(AllowedAccess(path.c_str()), c.access) << path;
    EXPECT_EQ(fileTime(path) != 0.0, c.hasTime) << path;
  }
  EXPECT_EQ(FolderExists(folder_.text().c_str()), 1);
  EXPECT_EQ(FileExists(nullptr), 0);
  EXPECT_EQ(FolderExists(nullptr), 0);
  EXPECT_EQ(folder_.entries(), 4U);
  EXPECT_EQ(AllowedAccess(nullptr), kReadWrite);
  EXPECT_EQ(FileExists(""), 0);
  // A name that is found along the search path cannot be opened by that name.
  EXPECT_GT(FileExists(support::kPlatform.program), 1);
  EXPECT_EQ(AllowedAccess(support::kPlatform.program), 0U);
  EXPECT_EQ(FileExists((std::string("C:") + support::kPlatform.program).c_str()), 0);
  // Such a file has no attributes under its bare name, and so the time zero.
  EXPECT_NEAR(fileTime(support::kPlatform.program), -109205.0, 1.0);

  const std::string missing = folder_.file("missing");
  EXPECT_EQ(TestCreate(folder_.file("none/file").c_str(), kReadWrite), 0);
  EXPECT_EQ(TestCreate(missing.c_str(), kReadWrite), 1);
  EXPECT_EQ(FileExists(missing.c_str()), 1);
  EXPECT_EQ(TestCreate(path_.c_str(), kReadWrite), 1);
  EXPECT_EQ(support::readFile(path_), "content");
}

TEST_F(Files, TimeIsALocalAutomationDate) {
  support::writeFile(path_, "");
  const support::TwoHoursEast zone;
  constexpr double kSecond = 1.0 / 86400;
  support::setWriteTime(path_, 1609459198);  // 2020-12-31 23:59:58
  EXPECT_NEAR(fileTime(path_), 44197 + (zone.seconds() - 2) * kSecond, 0.1 * kSecond);
}

TEST_F(Files, FolderChains) {
  const std::string chain = folder_.text() + "a\\b/c \\\\d";
  // A pair of separators starts a server name, so nothing is created.
  EXPECT_EQ(EnsurePathExists(chain.c_str()), 0);
  EXPECT_EQ(EnsurePathExists((folder_.name() + "\\a\\b/c").c_str()), 1);
  EXPECT_TRUE(std::filesystem::is_directory(folder_.file("a/b/c")));
  EXPECT_EQ(EnsurePathExists((folder_.name() + "\\a\\").c_str()), 1);
  EXPECT_EQ(folder_.entries(), 1U);

  // White space is dropped after each piece and before the path, but not before a piece.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  EnsurePathExists(" a\\ x \\y\t");
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::is_directory(folder_.file("a/ x/y")));
  std::filesystem::remove_all(folder_.file("a/ x"));

  support::writeFile(path_, "");
  EXPECT_EQ(EnsurePathExists((path_ + "\\x").c_str()), 0);
  // Nothing is created after the first failure.
  EXPECT_EQ(EnsurePathExists((path_ + "\\x\\..\\..\\new").c_str()), 0);
  EXPECT_EQ(EnsurePathExists(""), 0);
  EXPECT_EQ(EnsurePathExists(nullptr), 0);
  EXPECT_EQ(IsValidPath(path_.c_str()), 0);
  EXPECT_EQ(folder_.entries(), 2U);

  write("a/stays", "");
  EXPECT_EQ(DeleteEmptyFolder(folder_.file("a").c_str()), 0);
  EXPECT_EQ(DeleteEmptyFolder((folder_.text() + "a\\b\\c\\").c_str()), 1);
  EXPECT_FALSE(exists("a/b"));
  EXPECT_TRUE(exists("a/stays"));
}

}  // namespace
