// Paths of other programs, with drives and names of Linux.

#include <dlfcn.h>
#include <filesystem/stream.h>
#include <filesystem/trees.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace {

using FileSystem::libraryPath;
using FileSystem::nativePath;

TEST(HostPaths, AreThoseThatTheLibraryUses) {
  struct {
    const char* text;
    const char* native;
  } const cases[] = {
      {"C:\\data\\a.zip", "/data/a.zip"},
      {"c:c.zip", "c.zip"},
      {"C:", "/"},
      {"\\\\?\\C:\\data\\", "/data/"},
      {"link\\..\\out", "out"},
      {"..\\sub/x", "../sub/x"},
      {".\\c:x", "c:x"},
      {"sub\\4\uF05C5", "sub/4\\5"},
      {"Q:\\unmapped", ""},
      {"\\\\server\\share\\unmapped", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(nativePath(c.text), c.native) << c.text;
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

TEST(HostPaths, FollowMappedDrives) {
  // The library's own function, not that of the platform layer that is linked to the test.
  const auto define =
      reinterpret_cast<decltype(&DefineDosDeviceA)>(dlsym(RTLD_NEXT, "DefineDosDeviceA"));
  ASSERT_NE(define, nullptr);
  ASSERT_TRUE(define(0, "T:", "/mapped"));
  ASSERT_TRUE(define(0, "UNC\\s\\h", "/shared"));
  EXPECT_EQ(nativePath("T:\\a"), "/mapped/a");
  EXPECT_EQ(nativePath("\\\\s\\h\\a"), "/shared/a");
  EXPECT_TRUE(define(DDD_REMOVE_DEFINITION, "T:", nullptr));
  EXPECT_TRUE(define(DDD_REMOVE_DEFINITION, "UNC\\s\\h", nullptr));
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
