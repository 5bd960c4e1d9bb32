// Paths of other programs, with drives and names of Linux.

#include <filesystem/filesystem.h>

#include <climits>

#include "support/temporary_folder.h"

namespace {

using FileSystem::libraryPath;
using FileSystem::nativePath;

TEST(HostPaths, AreThoseThatTheLibraryUses) {
  const std::pair<const char*, const char*> cases[] = {
      {"C:\\data\\a.zip", "/data/a.zip"},
      {"\\\\?\\C:\\data\\", "/data/"},
      {"Q:\\unmapped", ""},
      {"", ""},
  };
  for (const auto& [text, native] : cases) EXPECT_EQ(nativePath(text), native) << text;
  EXPECT_EQ(nativePath(std::string(PATH_MAX, 'x').c_str()), "");
}

TEST(HostPaths, ComeBackAsTheyWere) {
  for (const char* native : {"/", "/data/a.zip", "/data/", "x", "c:x", "sub/c:x", "../x", "4\\5",
                             "\\\\name", "/\\name", "NUL", "sub/NUL", "\xFF\xFE"}) {
    EXPECT_EQ(nativePath(libraryPath(native).c_str()), native);
  }
  EXPECT_EQ(nativePath(libraryPath("//data//x").c_str()), "/data/x");
  EXPECT_EQ(libraryPath("a\uF05C"), "");
}

// A file of that name is meant, not the null device.
TEST(HostPaths, NameTheFileOfADevice) {
  const support::TemporaryFolder folder;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  EXPECT_TRUE(FileSystem::writeContent(libraryPath("NUL"), std::string("x")));
  EXPECT_TRUE(support::exists("NUL"));
  std::filesystem::current_path(before);
}

}  // namespace
