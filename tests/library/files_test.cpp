// Probes, and creation and deletion of folders.

#include <filesystem/files.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "support/open_file.h"
#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

constexpr unsigned long kRead = GENERIC_READ;
constexpr unsigned long kReadWrite = kRead | GENERIC_WRITE;

class Files : public testing::Test {
 protected:
  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("file");
};

TEST_F(Files, Probes) {
  support::writeFile(path_, "content");
  const std::string missing = folder_.file("missing");
  const std::string readOnly = folder_.file("read-only");
  support::writeFile(readOnly, "x");
  support::makeReadOnly(readOnly);
  const std::string shared = folder_.file("shared");
  support::writeFile(shared, "x");
  const platform::FileHandle writer =
      support::openFile(shared, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ);
  const std::string exclusive = folder_.file("exclusive");
  support::writeFile(exclusive, "x");
  const platform::FileHandle owner = support::openFile(exclusive);
  struct {
    std::string path;
    int exists, lockedWrite, readOnly;
    unsigned long access;
    bool hasTime;
  } const cases[] = {
      {missing, 0, 1, 1, kReadWrite, false},   {path_, 1, 0, 0, kReadWrite, true},
      {readOnly, 1, 0, 1, kRead, true},        {shared, 1, 1, 0, kRead, true},
      {exclusive, 0, 1, 0, kReadWrite, false}, {folder_.name(), 0, 1, 0, kReadWrite, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FileExists(c.path.c_str()), c.exists) << c.path;
    EXPECT_EQ(IsFileLockedWrite(c.path.c_str()), c.lockedWrite) << c.path;
    EXPECT_EQ(IsFileReadOnly(c.path.c_str()), c.readOnly) << c.path;
    EXPECT_EQ(AllowedAccess(c.path.c_str()), c.access) << c.path;
    EXPECT_EQ(fileTime(c.path) != 0.0, c.hasTime) << c.path;
  }
  EXPECT_EQ(AllowedAccess(nullptr), kReadWrite);
  EXPECT_EQ(FileExists(""), 0);
  // A name that is found along the search path cannot be opened by that name.
  EXPECT_GT(FileExists(support::kPlatform.program), 1);
  EXPECT_EQ(AllowedAccess(support::kPlatform.program), 0U);
  EXPECT_EQ(FileExists((std::string("C:") + support::kPlatform.program).c_str()), 0);
  // Such a file has no attributes under its bare name, and so the time zero.
  EXPECT_NEAR(fileTime(support::kPlatform.program), -109205.0, 1.0);
  EXPECT_EQ(FileExists("no-such-program"), 0);

  EXPECT_EQ(FolderExists(folder_.name().c_str()), 1);
  EXPECT_EQ(FolderExists(folder_.text().c_str()), 1);
  EXPECT_EQ(FolderExists(path_.c_str()), 0);
  EXPECT_EQ(FolderExists(missing.c_str()), 0);
  EXPECT_EQ(FolderExists(nullptr), 0);
  EXPECT_EQ(folder_.entries(), 4U);

  EXPECT_EQ(TestOpen(missing.c_str(), kRead), 0);
  EXPECT_EQ(TestCreate(folder_.file("none/file").c_str(), kReadWrite), 0);
  EXPECT_EQ(TestCreate(missing.c_str(), kReadWrite), 1);
  EXPECT_EQ(FileExists(missing.c_str()), 1);
  EXPECT_EQ(TestCreate(path_.c_str(), kReadWrite), 1);
  EXPECT_EQ(support::readFile(path_), "content");
}

TEST_F(Files, TimeIsALocalAutomationDate) {
  support::writeFile(path_, "");
  const support::TwoHoursEast zone;
  struct {
    std::time_t utc;
    double date;
  } const cases[] = {
      {0, 25569.0},                         // 1970-01-01
      {1609459199, 44197.0 - 1.0 / 86400},  // 2020-12-31 23:59:59
  };
  for (const auto& c : cases) {
    support::setWriteTime(path_, c.utc);
    EXPECT_NEAR(fileTime(path_), c.date + zone.seconds() / 86400, 0.1 / 86400) << c.utc;
  }
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
  EXPECT_EQ(EnsurePathExists(""), 0);
  EXPECT_EQ(EnsurePathExists(nullptr), 0);
  EXPECT_EQ(IsValidPath(folder_.text().c_str()), 1);
  EXPECT_EQ(IsValidPath(folder_.file("missing").c_str()), 0);
  EXPECT_EQ(IsValidPath(path_.c_str()), 0);
  EXPECT_EQ(folder_.entries(), 2U);

  support::writeFile(folder_.file("a/stays"), "");
  EXPECT_EQ(DeleteEmptyFolder(folder_.file("a").c_str()), 0);
  EXPECT_EQ(DeleteEmptyFolder((folder_.text() + "a\\b\\c\\").c_str()), 1);
  EXPECT_FALSE(support::exists(folder_.file("a/b")));
  EXPECT_TRUE(support::exists(folder_.file("a/stays")));
}

}  // namespace
