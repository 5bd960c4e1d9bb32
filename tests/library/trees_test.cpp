// Copying, lock files, the sweep of old files, and temporary storage.

#include <cstring>

#include "library/host_trees.h"

namespace {

using FileSystem::TemporaryStorage;

using Trees = HostTrees;

TEST_F(Trees, CopyModes) {
  // The lower halves of these times are in reverse order.
  constexpr std::time_t kSourceTime = 1600000000;
  constexpr std::time_t kTargetTimes[] = {1000000000, kSourceTime - 300, kSourceTime,
                                          kSourceTime + 400};
  struct {
    unsigned int mode;
    bool copies[4];  // onto no target, an older one, one of the same time and a newer one
  } const cases[] = {
      {0, {true, true, true, true}},     {1, {true, false, false, false}},
      {2, {false, true, true, true}},    {3, {false, true, true, true}},
      {4, {true, true, false, false}},   {5, {false, false, false, false}},
      {6, {false, true, false, false}},  {7, {false, true, false, false}},
      {8, {false, false, false, false}},
  };
  const std::string source = path("f.txt");
  const std::string target = path("out/f.txt");
  const std::string out = folder_.text() + "out\\";
  for (const auto& c : cases) {
    for (int i = 0; i < 4; ++i) {
      support::writeFile(source, "new");
      support::setWriteTime(source, kSourceTime);
      support::writeFile(target, "old");
      support::setWriteTime(target, kTargetTimes[i]);
      if (i == 0) std::filesystem::remove(target);
      EXPECT_EQ(FileSystem::CopyFileA(source.c_str(), out.c_str(), c.mode) != 0, c.copies[i]);
      const std::string expected = c.copies[i] ? "new" : i == 0 ? "" : "old";
      EXPECT_EQ(support::readFile(target), expected) << c.mode << ' ' << i;
    }
  }
  EXPECT_NE(FileSystem::CopyFileA(source.c_str(), (folder_.text() + "pre-").c_str(), 0), 0);
  EXPECT_TRUE(exists("pre-f.txt"));
  // The copy's name is trimmed.
  write("sp .txt", "spaces");
  EXPECT_NE(FileSystem::CopyFileA(path("sp .txt").c_str(), out.c_str(), 0), 0);
  EXPECT_EQ(read("out/sp.txt"), "spaces");
}

TEST_F(Trees, CopyContent) {
  write("in/a", "a");
  write("in/sub/deep/b", "b");
  write("in/held", "h");
  write("out/a", "old");
  std::filesystem::create_directory(path("in/empty"));
  const std::string in = folder_.text() + "in\\";
  const std::string out = folder_.text() + "out\\";
  {
    const platform::FileHandle held = support::openFile(in + "held");
    EXPECT_EQ(FileSystem::CopyContent(in, out), 2);
    EXPECT_FALSE(exists("out/held"));
  }
  EXPECT_EQ(FileSystem::CopyContent(in, out), 3);
  shell("diff -r in out");
  EXPECT_EQ(FileSystem::CopyContent(in + "empty\\", folder_.text() + "new\\"), 0);
  EXPECT_TRUE(exists("new"));
  EXPECT_EQ(FileSystem::CopyContent(in, folder_.text() + "in\\a\\x\\"), -4);
  // A target in the source is created after the source was listed.
  EXPECT_EQ(FileSystem::CopyContent(in, in + "copy\\"), 3);
  EXPECT_FALSE(exists("in/copy/copy"));
}

// The target's folders are created while the source is read. The one that is read last has copies of
// all others by then.
TEST_F(Trees, CopyContentDoesNotCopyItsOwnCopies) {
  const std::string names[] = {"a", "b", "c"};
  for (const std::string& target : names) {
    const std::string in = "in-" + target;
    for (const std::string& name : names) write(in + '/' + name + "/file", name);
    const std::string source = folder_.text() + in + '\\';
    EXPECT_EQ(FileSystem::CopyContent(source, source + target + '\\'), 3);
    for (const std::string& name : names) {
      const std::string copies = in + '/' + target + '/';
      EXPECT_TRUE(exists(copies + name)) << copies << name;
      EXPECT_FALSE(exists(copies + target + '/' + name)) << copies << name;
    }
  }
}

TEST_F(Trees, CopyContentPassesOverTheParentsOfANewTarget) {
  write("in/file", "x");
  const std::string in = folder_.text() + "in\\";
  EXPECT_EQ(FileSystem::CopyContent(in, in + "new\\deep\\"), 1);
  EXPECT_FALSE(exists("in/new/deep/new"));
}

TEST_F(Trees, LockFiles) {
  const std::string name = std::to_string(GetCurrentProcessId()) + ".lock";
  EXPECT_EQ(FileSystem::DeleteLockFile(folder_.name().c_str()), 0);
  EXPECT_EQ(FileSystem::CreateLockFile(folder_.name().c_str()), 1);
  support::writeFile(path(name), "kept");
  EXPECT_EQ(FileSystem::CreateLockFile(folder_.text().c_str()), 1);
  EXPECT_EQ(read(name), "kept");
  for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
    const platform::FileHandle held =
        support::openFile(path(name), GENERIC_READ | GENERIC_WRITE, share);
    EXPECT_EQ(FileSystem::CreateLockFile(folder_.name().c_str()), share == 0 ? 0 : 1);
  }
  EXPECT_NE(FileSystem::DeleteLockFile(folder_.text().c_str()), 0);
  EXPECT_FALSE(exists(name));
  EXPECT_EQ(FileSystem::CreateLockFile(path("missing").c_str()), 0);
  EXPECT_EQ(FileSystem::CreateLockFile((folder_.name() + "/").c_str()), 1);
  EXPECT_TRUE(exists(name));
}

TEST_F(Trees, Sweep) {
  std::filesystem::create_directory(path("void"));
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 4294967295U), 0U);
  EXPECT_FALSE(exists("void"));
  const std::tuple<const char*, std::time_t, bool> cases[] = {
      {".tmp", 10, false},
      {support::fileSystem().exactCase ? "top.TMP" : "other.TMP", 10, false},
      {"top.txt", 10, true},
      {"young.tmp", 0, true},
      {"old/deep/a.txt", 8, false},
      {"old/other/b.txt", 8, false},
      {"mixed/old", 8, false},
      {"mixed/young", 6, true},
  };
  for (const auto& [name, days, stays] : cases) write(name, "", days);
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 7), 5U);
  for (const auto& [name, days, stays] : cases) EXPECT_EQ(exists(name), stays) << name;
  EXPECT_FALSE(exists("old"));
  write("future.tmp", "", -1);
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 0), 2U);
  EXPECT_TRUE(exists("future.tmp"));
  EXPECT_EQ(FileSystem::eraseOldFile(path("missing\\"), 0), 0U);

  // A folder that was empty stays if it is the start.
  std::filesystem::create_directory(path("void"));
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text() + "void\\", 0), 0U);
  EXPECT_TRUE(exists("void"));
  // A folder that becomes empty is deleted, and so are its parents that become empty.
  write("chain/top/sub/f", "", 2);
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text() + "chain\\top\\", 1), 1U);
  EXPECT_FALSE(exists("chain"));
}

TEST_F(Trees, SweepCountsWholeDaysInAnotherTimeZone) {
  const support::TwoHoursEast zone;
  constexpr std::time_t kHour = 3600;
  const std::time_t limit = std::time(nullptr) - 7 * (24 * kHour);
  write("old.tmp", "");
  write("young.tmp", "");
  support::setWriteTime(path("old.tmp"), limit - kHour);
  support::setWriteTime(path("young.tmp"), limit + kHour);
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 7), 1U);
  EXPECT_TRUE(exists("young.tmp"));
}

int folderExists(const std::string& path) { return FileSystem::FolderExists(path.c_str()); }

TEST_F(Trees, TemporaryStorageHasAFolderOfItsOwn) {
  TemporaryStorage storage;
  EXPECT_EQ(storage.path(), "");
  EXPECT_EQ(storage.basePath(), "");
  ASSERT_TRUE(storage.create(folder_.name(), false));
  EXPECT_EQ(storage.basePath(), folder_.text());
  EXPECT_EQ(folderExists(storage.path()), 1);
  std::string form = storage.path().substr(folder_.text().size());
  for (char& c : form) c = std::strchr("0123456789ABCDEF", c) != nullptr ? 'x' : c;
  EXPECT_EQ(form, "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}\\") << storage.path();

  ASSERT_TRUE(storage.create(folder_.name() + "/", false));
  EXPECT_TRUE(storage.path().starts_with(folder_.name() + "/\\{")) << storage.path();
}

TEST_F(Trees, TemporaryStorageIsClearedOnce) {
  TemporaryStorage storage;
  ASSERT_TRUE(storage.create(folder_.text(), false));
  const std::string first = storage.path();
  // Also if the new base cannot be used.
  EXPECT_FALSE(storage.create(path("missing"), true));
  EXPECT_EQ(folderExists(first), 0);
  EXPECT_EQ(storage.path(), first);
  ASSERT_TRUE(storage.create(folder_.text(), false));
  EXPECT_NE(storage.path(), first);
  // A copy deletes the folder too.
  EXPECT_EQ(TemporaryStorage(storage).path(), storage.path());
  EXPECT_EQ(folderExists(storage.path()), 0);
  storage.clear();
  EXPECT_EQ(storage.basePath(), folder_.text());
  // A cleared storage owns its former path no longer.
  ASSERT_EQ(FileSystem::EnsurePathExists(storage.path().c_str()), 1);
  storage.clear();
  EXPECT_EQ(folderExists(storage.path()), 1);
}

TEST_F(Trees, TemporaryStorageLeavesFilesInUse) {
  TemporaryStorage storage;
  ASSERT_TRUE(storage.create(folder_.text(), false));
  const platform::FileHandle held =
      support::openFile(storage.path() + "held", GENERIC_READ, 3, CREATE_NEW);
  storage.clear();
  EXPECT_EQ(FileSystem::FileExists((storage.path() + "held").c_str()), 1);
}

TEST_F(Trees, TemporaryStorageDeletesItsBaseOnRequest) {
  TemporaryStorage storage;
  // The parent of a path with backslashes alone is known.
  const std::string base = folder_.text() + "parent\\base";
  std::filesystem::create_directories(path("parent/base"));
  ASSERT_TRUE(storage.create(base, true));
  storage.clear();
  EXPECT_EQ(folderExists(base), 0);
  EXPECT_TRUE(exists("parent"));
  // A request is for one folder alone.
  std::filesystem::create_directory(path("parent/base"));
  ASSERT_TRUE(storage.create(base, false));
  storage.clear();
  EXPECT_EQ(folderExists(base), 1);
  // Without its folder, a storage does not touch the base.
  ASSERT_TRUE(storage.create(base, true));
  support::writeFile(path("parent/neighbour"), "");
  EXPECT_EQ(FileSystem::eraseOldFile(base + "\\", 0), 0U);
  std::filesystem::create_directory(path("parent/base"));
  storage.clear();
  EXPECT_EQ(folderExists(base), 1);
}

}  // namespace
