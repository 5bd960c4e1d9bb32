// Enumeration of what only this platform has.

#include <filesystem/enumeration.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;
using Names = std::vector<std::string>;

class EnumerationOnLinux : public testing::Test {
 protected:
  void make(std::initializer_list<const char*> files) {
    for (const char* name : files) support::writeFile(folder_.file(name), name);
  }
  // Paths without the folder in front of them, sorted.
  Names below(Names paths) const {
    for (std::string& path : paths) path.erase(0, text_.size());
    std::sort(paths.begin(), paths.end());
    return paths;
  }

  support::TemporaryFolder folder_;
  std::string text_ = folder_.text();
  const char* path_ = text_.c_str();
};

TEST_F(EnumerationOnLinux, LinksAreFollowedButNotBack) {
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
}

// A backslash in a name is no separator, and the path that is delivered opens
// the file.
TEST_F(EnumerationOnLinux, BackslashInANameComesBack) {
  make({"sub/a\\b"});
  Names paths;
  ASSERT_EQ(EnumFilesWithPath(paths, path_, "*", true), 1U);
  EXPECT_EQ(below(paths), Names{"sub\\a\xEF\x81\x9C"
                                "b"});
  EXPECT_TRUE(platform::FileHandle(
      CreateFileA(paths[0].c_str(), GENERIC_READ, 3, nullptr, OPEN_EXISTING, 0, nullptr)));
}

// Each level would cost a descriptor if its search stayed open.
TEST_F(EnumerationOnLinux, DepthCostsNoDescriptors) {
  constexpr int kDepth = 300;
  std::filesystem::path deep = folder_.path();
  for (int i = 0; i < kDepth; ++i) deep /= "d";
  std::filesystem::create_directories(deep);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit few{100, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  std::vector<FILE_INFORMATION> records;
  EXPECT_EQ(EnumFolders(records, path_, 1), 0U + kDepth);
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(std::string(records.back().cFileName).size(), 259U);
}

}  // namespace
