// Who may read unpacked files and folders before they are complete.

#include <sys/stat.h>

#include "failing_calls.h"
#include "library/zip.h"
#include "support/linux/left_over.h"

namespace {

class Unpacking : public Zip {
 protected:
  void SetUp() override {
    if (!support::fileSystem().modes) GTEST_SKIP() << "no modes here";
    write("in/private/file", "new");
    write("in/secret", "new");
    chmod(folder_.file("in/private").c_str(), 0700);
    chmod(folder_.file("in/secret").c_str(), 0600);
    chmod(in_.c_str(), 0700);
    ASSERT_TRUE(FileSystem::packFolder(in_.c_str(), path_.c_str()));
  }

  // Inspects what has a name, and what is open without one. The folder that is unpacked to is created
  // with all permissions of the umask, and is empty then.
  void inspect(ino_t old) const {
    struct stat status {};
    const bool isFilled = lstat(out_.c_str(), &status) == 0 && !std::filesystem::is_empty(out_);
    if (isFilled) {
      EXPECT_EQ(status.st_mode & 077, 0U);
    }
    for (const char* const name : {"/private", "/secret"}) {
      const bool isThere = lstat((out_ + name).c_str(), &status) == 0 && status.st_ino != old;
      if (isThere) {
        EXPECT_EQ(status.st_mode & 077, 0U) << name;
      }
    }
    for (const auto& [number, path] : support::openDescriptors()) {
      const bool isTemporary = path.starts_with(out_ + "/#") || path.starts_with(out_ + "/.~copy");
      if (!isTemporary || fstat(number, &status) != 0) continue;
      EXPECT_EQ(status.st_mode & 077, 0U) << path;
    }
  }
};

TEST_F(Unpacking, IsAtNoInstantOpenToMore) {
  const FileSystem::Archive archive = openArchive();
  const mode_t mask = umask(0);
  for (const bool replaces : {false, true}) {
    SCOPED_TRACE(replaces);
    std::filesystem::remove_all(out_);
    struct stat old {};
    if (replaces) {
      support::writeFile(out_ + "/secret", "old");
      chmod(out_.c_str(), 0700);
      chmod((out_ + "/secret").c_str(), 0644);
      lstat((out_ + "/secret").c_str(), &old);
    }
    const failing::Failing watcher(failing::Fault::Interruption, 1, [&] { inspect(old.st_ino); });
    EXPECT_TRUE(archive.unpack(archive.entries(), out_.c_str()));
    EXPECT_GT(watcher.count(), 5);
    EXPECT_EQ(support::readFile(out_ + "/secret"), "new");
    inspect(old.st_ino);
  }
  umask(mask);
}

}  // namespace
