// Files under names in another letter case, in a directory that ignores it.

#include <fcntl.h>
#include <filesystem/files.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>

#include <cstdlib>
#include <string>

#include "platform/linux/opening/descriptor.h"
#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

// The directory is the one that VESK_CASEFOLD names, or it is on a tmpfs with the option casefold,
// which Linux has since 6.13 and which only the superuser mounts.
TEST(Casefold, NamesInAnyCaseAreOneFile) {
  const support::TemporaryFolder folder;
  const char* const given = std::getenv("VESK_CASEFOLD");
  const bool isMounted =
      given == nullptr && mount("none", folder.path().c_str(), "tmpfs", 0, "casefold") == 0;
  if (given == nullptr && !isMounted) GTEST_SKIP() << "no tmpfs with the option casefold";
  const std::string path = (given != nullptr ? given : folder.name()) + "/vesk-casefold-test/";
  std::filesystem::remove_all(path);
  std::filesystem::create_directory(path);
  if (isMounted) {
    const platform::native::Descriptor directory(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const int flags = FS_CASEFOLD_FL;
    EXPECT_EQ(ioctl(directory.get(), FS_IOC_SETFLAGS, &flags), 0);
  }

  support::writeFile(path + "Sub/A.txt", "old");
  EXPECT_EQ(FileExists((path + "sUB/a.TXT").c_str()), 1);
  EXPECT_EQ(EnsurePathExists((path + "sub").c_str()), 1);

  // A copy meets the existing name, also its own.
  const support::TemporaryFolder elsewhere;
  const std::string source = elsewhere.file("a.TXT");
  support::writeFile(source, "new");
  const std::string target = path + "sub\\";
  EXPECT_EQ(FileSystem::CopyFileA(source.c_str(), target.c_str(), kCopyIfMissing), 0);
  EXPECT_NE(FileSystem::CopyFileA(source.c_str(), target.c_str(), kCopyIfExisting), 0);
  EXPECT_EQ(FileSystem::CopyFileA((target + "a.txt").c_str(), target.c_str(), kCopyAlways), 0);
  EXPECT_EQ(support::readFile(path + "Sub/A.txt"), "new");

  std::filesystem::remove_all(path);
  if (isMounted) umount(folder.path().c_str());
}

}  // namespace
