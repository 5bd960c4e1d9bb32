// Deletion of trees that hold links, or are changed meanwhile.

#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "library/host_trees.h"

namespace {

namespace fs = std::filesystem;
using FileSystem::TemporaryStorage;

class TreesOnLinux : public HostTrees {
 protected:
  void writeOld(const std::string& file) {
    support::writeFile(file, "");
    support::setWriteTime(file, 0);
  }
  // A storage's directory as the native programs name it.
  std::string nativeOf(const TemporaryStorage& storage) const {
    const std::string name = storage.path().substr(storage.basePath().size());
    return folder_.file(name.substr(0, name.size() - 1));
  }

  support::TemporaryFolder elsewhere_;
};

TEST_F(TreesOnLinux, SweepDoesNotGoThroughLinks) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  writeOld(elsewhere_.file("old"));
  fs::create_directory_symlink(elsewhere_.path(), folder_.file("link"));
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 7), 0U);
  EXPECT_TRUE(fs::is_symlink(folder_.file("link")));
  EXPECT_TRUE(support::exists(elsewhere_.file("old")));

  // A link as the start is followed, but it is no directory that has become empty.
  writeOld(elsewhere_.file("sub/old"));
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.file("link\\"), 7), 1U);
  EXPECT_FALSE(support::exists(elsewhere_.file("sub")));
  EXPECT_TRUE(fs::is_symlink(folder_.file("link")));
  fs::create_directory(elsewhere_.file("sub"));
  EXPECT_EQ(FileSystem::DeleteEmptyFolder(folder_.file("link\\sub").c_str()), 1);
  EXPECT_TRUE(fs::is_symlink(folder_.file("link")));
}

TEST_F(TreesOnLinux, SweepStaysInItsTreeWhileDirectoriesAreSwapped) {
  if (!support::fileSystem().links || !support::fileSystem().exchange)
    GTEST_SKIP() << "no exchange here";
  writeOld(elsewhere_.file("old"));
  write("tree/sub/new", "");
  fs::create_directory_symlink(elsewhere_.path(), folder_.file("link"));
  std::atomic<bool> isDone = false;
  std::thread swapper([&, sub = folder_.file("tree/sub"), link = folder_.file("link")] {
    constexpr int kSwaps = 20000;
    int swaps = 0;
    while (swaps < kSwaps &&
           renameat2(AT_FDCWD, sub.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE) == 0) {
      ++swaps;
    }
    EXPECT_EQ(swaps, kSwaps);
    isDone = true;
  });
  while (!isDone) FileSystem::eraseOldFile(folder_.file("tree\\"), 1);
  swapper.join();
  EXPECT_TRUE(support::exists(elsewhere_.file("old")));
}

// The roots of mapped drives and shares stay, even if they are empty.
TEST_F(TreesOnLinux, RootsOfDrivesStay) {
  // The library's own function, not that of the platform layer that is linked to the test.
  const auto define =
      reinterpret_cast<decltype(&DefineDosDeviceA)>(dlsym(RTLD_NEXT, "DefineDosDeviceA"));
  ASSERT_NE(define, nullptr);
  const std::string mapped = folder_.file("mapped");
  const char* const devices[] = {"T:", "UNC\\s\\h"};
  for (const char* device : devices) ASSERT_TRUE(define(0, device, mapped.c_str()));
  const std::pair<const char*, int> cases[] = {
      {"T:\\", 0},        {"T:", 0},       {"T:\\a\\..", 0},          {"T:\\a", 1},
      {"\\\\s\\h\\a", 1}, {"\\\\s\\h", 0}, {"\\\\S\\h\\a\\..\\..", 0}};
  for (const auto& [path, removed] : cases) {
    fs::create_directories(mapped + (removed != 0 ? "/a" : ""));
    EXPECT_EQ(FileSystem::DeleteEmptyFolder(path), removed) << path;
    EXPECT_TRUE(fs::is_empty(mapped)) << path;
  }
  fs::create_directories(mapped + "/a");
  EXPECT_EQ(FileSystem::eraseOldFile("T:\\", 1), 0U);
  EXPECT_TRUE(fs::is_empty(mapped));
  for (const char* device : devices) EXPECT_TRUE(define(DDD_REMOVE_DEFINITION, device, nullptr));
}

TEST_F(TreesOnLinux, ATemporaryStorageThatWasReplacedByALinkIsKept) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  support::writeFile(elsewhere_.file("kept"), "");
  TemporaryStorage storage;
  ASSERT_TRUE(storage.create(folder_.name(), false));
  fs::remove(nativeOf(storage));
  fs::create_directory_symlink(elsewhere_.path(), nativeOf(storage));
  storage.clear();
  EXPECT_TRUE(support::exists(elsewhere_.file("kept")));
}

TEST_F(TreesOnLinux, ReadOnlyDirectories) {
  if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
  const std::string path = folder_.file("read-only");
  fs::create_directories(path + "/sub");
  fs::permissions(path, fs::perms(0555));
  // The superuser can delete what is in it.
  const int expected = geteuid() == 0 ? 1 : 0;
  EXPECT_EQ(FileSystem::DeleteEmptyFolder((path + "\\sub").c_str()), expected);
  EXPECT_EQ(FileSystem::DeleteEmptyFolder(path.c_str()), 0);
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 0), 0U);
  EXPECT_TRUE(support::exists(path));
  // Those that are created can be written to.
  const mode_t before = umask(0222);
  FileSystem::EnsurePathExists((folder_.name() + "\\a\\b").c_str());
  FileSystem::CopyContent(folder_.text() + "a\\", folder_.text() + "copy\\");
  umask(before);
  EXPECT_EQ(FileSystem::IsFileReadOnly(folder_.file("a").c_str()), 0);
  EXPECT_EQ(FileSystem::IsFileReadOnly(folder_.file("a/b").c_str()), 0);
  EXPECT_EQ(FileSystem::IsFileReadOnly(folder_.file("copy/b").c_str()), 0);
}

// Texts beyond the size of their buffer are cut.
TEST_F(TreesOnLinux, LongTexts) {
  const std::string name(20, 'n');
  support::writeFile(elsewhere_.file(name), "");
  const std::string padded = folder_.name() + std::string(250 - folder_.name().size(), '/');
  EXPECT_NE(FileSystem::CopyFileA(elsewhere_.file(name).c_str(), padded.c_str(), 0), 0);
  EXPECT_TRUE(exists(name.substr(0, 10)));

  EXPECT_EQ(FileSystem::FolderExists(padded.substr(0, 246).c_str()), 1);
  EXPECT_EQ(FileSystem::FolderExists(padded.substr(0, 247).c_str()), 0);

  writeOld(elsewhere_.file("sub/" + name));
  // The path of the file has 260 bytes.
  const std::string deep =
      elsewhere_.name() + std::string(235 - elsewhere_.name().size(), '/') + '\\';
  EXPECT_EQ(FileSystem::eraseOldFile(deep, 1), 0U);
  EXPECT_EQ(FileSystem::eraseOldFile(elsewhere_.text(), 1), 1U);

  const std::string piece = folder_.text() + std::string(200, 'x') + '\\';
  EXPECT_EQ(FileSystem::EnsurePathExists((piece + std::string(100, 'y')).c_str()), 0);
  // The root is the first separator.
  const std::string cut(1 + 259 - piece.size(), 'y');
  EXPECT_TRUE(exists(std::string(200, 'x') + '/' + cut));
}

// Folders whose path exceeds the longest text of a folder chain, or whose name ends in a space.
TEST_F(TreesOnLinux, CopyContentKeepsTheNamesOfFolders) {
  if (!support::fileSystem().anyName) GTEST_SKIP() << "no such names here";
  const std::string component(150, 'c');
  const std::string deep = component + '/' + component + '/' + component + '/';
  write("in/" + deep + "file", "content");
  write("in/space /file", "content");
  EXPECT_EQ(FileSystem::CopyContent(folder_.text() + "in\\", folder_.text() + "out\\"), 2);
  shell("diff -r in out");
  // No folder gets the beginning of a target's path as its name.
  const std::string tooLong = folder_.text() + std::string(250, 't') + '\\';
  EXPECT_EQ(FileSystem::CopyContent(folder_.text() + "in\\", tooLong), -4);
  EXPECT_EQ(folder_.entries(), 2U);
}

// Opening for writing and creating follow a dangling link, as native programs do.
TEST_F(TreesOnLinux, DanglingLinksLeadToNewFiles) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  const std::string link = folder_.file("link");
  const std::string real = folder_.file("real");
  const std::function<bool()> ways[] = {
      [&] { return FileSystem::writeContent(link, "x"); },
      [&] { return ZipArchive().create(link.c_str(), 1) == 1; },
      [&] { return FRT_ZIP_FOLDER(elsewhere_.name().c_str(), link.c_str()); },
  };
  fs::create_symlink(real, link);
  for (const std::function<bool()>& creates : ways) {
    fs::remove(real);
    EXPECT_TRUE(creates()) << &creates - ways;
    EXPECT_TRUE(fs::is_symlink(link)) << &creates - ways;
    EXPECT_TRUE(fs::is_regular_file(real)) << &creates - ways;
  }
}

TEST_F(TreesOnLinux, DeepTreesNeedFewDescriptors) {
  constexpr int kDepth = 150;
  TemporaryStorage storage;
  ASSERT_TRUE(storage.create(folder_.name(), false));
  fs::path deep = nativeOf(storage);
  for (int i = 0; i < kDepth; ++i) deep /= "d";
  support::writeFile(deep.string() + "/file", "");
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit few{100, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  std::vector<FileSystem::FILE_INFORMATION> records;
  EXPECT_EQ(FileSystem::EnumFolders(records, storage.path().c_str(), 1), 0U + kDepth);
  EXPECT_EQ(FileSystem::CopyContent(storage.path(), folder_.text() + "copy\\"), 1);
  storage.clear();
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(std::string(records.back().cFileName).size(), 259U);
  EXPECT_FALSE(support::exists(nativeOf(storage)));
}

}  // namespace
