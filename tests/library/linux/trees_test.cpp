// What lies behind a link stays, whatever is deleted.

#include <filesystem/files.h>
#include <filesystem/temporary_storage.h>
#include <gtest/gtest.h>

#include <string>

#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

class TreesOnLinux : public testing::Test {
 protected:
  support::TemporaryFolder folder_;
  support::TemporaryFolder elsewhere_;
};

TEST_F(TreesOnLinux, SweepDoesNotGoThroughLinks) {
  support::writeFile(elsewhere_.file("old"), "");
  support::setWriteTime(elsewhere_.file("old"), 0);
  std::filesystem::create_directory_symlink(elsewhere_.path(), folder_.file("link"));
  EXPECT_EQ(FileSystem::eraseOldFile(folder_.text(), 7), 0U);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("link")));
  EXPECT_TRUE(support::exists(elsewhere_.file("old")));
}

TEST_F(TreesOnLinux, TemporaryStorageTakesAllOfItsOwn) {
  support::writeFile(elsewhere_.file("kept"), "");
  FileSystem::TemporaryStorage storage;
  ASSERT_TRUE(storage.create(folder_.name(), true));
  const std::string path = storage.path();
  std::string native = path;
  native.erase(0, folder_.text().size());
  native = folder_.file(native.substr(0, native.size() - 1));
  ASSERT_EQ(support::run(native, "mkdir -p a/b/c && touch a/1 a/b/2 a/b/c/3 '4\\5' && ln -s '" +
                                     elsewhere_.path().string() +
                                     "' a/link && ln -s /nowhere a/dangling && ln -s .. a/b/up && "
                                     "mkfifo fifo"),
            0);
  support::writeFile(folder_.file("neighbour"), "");
  storage.clear();
  EXPECT_FALSE(support::exists(native));
  EXPECT_TRUE(support::exists(folder_.file("neighbour")));
  EXPECT_TRUE(support::exists(elsewhere_.file("kept")));
}

}  // namespace
