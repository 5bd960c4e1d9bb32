// Replacing files where the system does not do what it should.

#include "platform/linux/replacing/replacement_file.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <utility>

#include "platform/gathered_copies.h"
#include "platform/linux/opening/remote_file.h"
#include "platform/linux/replacing/overwriting.h"
#include "platform/linux/trees/new_link.h"
#include "support/folder_test.h"
#include "support/linux/forked_process.h"
#include "support/linux/idle_system.h"

namespace {

// The behaviour of the file system, which the functions below imitate.
struct FileSystemModel {
  bool isSmb = false;
  int failures = 0;  // of the next renames
  int held = -1;     // the descriptor of the target
  bool wasHeldAtRename = false;
  bool isFullNfs = false;
  bool refusedPage = false;  // an NFS client holds a page that the server refused
  bool sentAgain = false;
  bool losesUnnoticed = false;  // what is lost shows only in the files, as in older kernels
  int lost = 0;                 // files of a common commit that the disk cannot store
  int commits = 0;
  int unwritten = 0;        // KiB that wait for being written to a disk
  bool needsNames = false;  // as in an overlay of an older kernel
  int cloneError = 0;
  int timeError = 0;
};
FileSystemModel model;

// The client sends the page that it truncated again, once.
void sendRefusedPage(int file) {
  constexpr off_t kPage = 4096;
  if (!std::exchange(model.refusedPage, false) || std::exchange(model.sentAgain, true)) return;
  syscall(SYS_ftruncate, file, kPage);
}

}  // namespace

// The library's calls resolve to these functions of the program.

// The last argument of the next two may be missing. It is in a register then as well, and the kernel
// does not read it. Their names are others in C++, because headers declare them otherwise.

extern "C" int openFile(const char* path, int flags, mode_t mode) __asm__("open");
extern "C" int openFile(const char* path, int flags, mode_t mode) {
  return support::openOnIdleSystem(AT_FDCWD, path, flags, mode, model.unwritten);
}

extern "C" int openFileAt(int folder, const char* path, int flags, mode_t mode) __asm__("openat");
extern "C" int openFileAt(int folder, const char* path, int flags, mode_t mode) {
  errno = EOPNOTSUPP;
  if (model.needsNames && (flags & O_TMPFILE) == O_TMPFILE) return -1;
  return support::openOnIdleSystem(folder, path, flags, mode);
}

extern "C" int fstatfs(int file, struct statfs* status) noexcept {
  const int result = static_cast<int>(syscall(SYS_fstatfs, file, status));
  if (model.isSmb) status->f_type = 0xFE534D42;
  return result;
}

extern "C" int fallocate(int file, int mode, off_t at, off_t size) {
  errno = EOPNOTSUPP;
  if (model.isSmb || model.isFullNfs) return -1;
  return static_cast<int>(syscall(SYS_fallocate, file, mode, at, size));
}

extern "C" int syncfs(int file) noexcept {
  errno = EIO;
  if (model.lost > 0 && !model.losesUnnoticed) return -1;
  return static_cast<int>(syscall(SYS_syncfs, file));
}

extern "C" int sync_file_range(int file, off_t at, off_t size, unsigned flags) {
  errno = EIO;
  if (model.lost > 0 && model.losesUnnoticed) return -1;
  return static_cast<int>(syscall(SYS_sync_file_range, file, at, size, flags));
}

extern "C" int fdatasync(int file) {
  sendRefusedPage(file);
  ++model.commits;
  errno = EIO;
  if (model.lost > 0 && model.lost-- > 0) return -1;
  if (!model.isFullNfs) return static_cast<int>(syscall(SYS_fdatasync, file));
  model.isFullNfs = false;
  model.refusedPage = true;
  errno = ENOSPC;
  return -1;
}

extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
  errno = model.cloneError;
  return request == FICLONE ? -1 : static_cast<int>(syscall(SYS_ioctl, file, request, nullptr));
}

extern "C" int utimensat(int folder, const char* path, const struct timespec* times,
                         int flags) noexcept {
  errno = model.timeError;
  if (model.timeError != 0) return -1;
  return static_cast<int>(syscall(SYS_utimensat, folder, path, times, flags));
}

extern "C" int futimens(int file, const struct timespec* times) noexcept {
  errno = model.timeError;
  if (model.timeError != 0) return -1;
  return static_cast<int>(syscall(SYS_utimensat, file, nullptr, times, 0));
}

// An SMB client deletes the target before it reports that it cannot be replaced.
extern "C" int renameat(int from, const char* old, int to, const char* path) noexcept {
  model.wasHeldAtRename = model.held >= 0 && fcntl(model.held, F_GETFD) >= 0;
  if (model.failures > 0) {
    --model.failures;
    if (model.isSmb) unlinkat(to, path, 0);
    errno = EACCES;
    return -1;
  }
  return static_cast<int>(syscall(SYS_renameat2, from, old, to, path, 0));
}

namespace {

using platform::native::Descriptor;
using platform::native::Replaced;
using platform::native::ReplacementFile;

class ReplacementFiles : public support::FolderTest {
 protected:
  ~ReplacementFiles() override { model = {}; }

  Replaced replace(bool isSmb, int failures) {
    write("target", "old");
    const Descriptor directory(open(folder_.path().c_str(), O_PATH | O_CLOEXEC));
    Descriptor held(open(folder_.file("target").c_str(), O_RDWR | O_CLOEXEC));
    model = {.isSmb = isSmb, .failures = failures, .held = held.get()};
    struct stat status {};
    fstat(held.get(), &status);
    ReplacementFile file(
        {.directory = directory.get(), .name = "target", .status = status, .held = &held},
        ReplacementFile::Named::AtTheEnd);
    EXPECT_EQ(::write(file.descriptor(), "new", 3), 3);
    EXPECT_EQ(file.complete(), Replaced::Yes);
    return file.putInPlace();
  }
  // Overwrites the target with the first bytes of the source.
  bool overwrite(off_t size) const {
    const Descriptor from(open(folder_.file("source").c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor to(open(folder_.file("target").c_str(), O_RDWR | O_CLOEXEC));
    struct stat old {};
    fstat(to.get(), &old);
    const bool isDone = platform::native::overwriteContent(from.get(), size, old, to.get());
    const int error = errno;
    sendRefusedPage(to.get());  // at the latest when the file is closed
    errno = error;
    return isDone;
  }
  // Replaces ten files, and returns the numbers of those that are reported as failed.
  std::set<std::uint64_t> replaceTogether() const {
    std::set<std::uint64_t> failed;
    platform::GatheredCopies copies([&](const platform::GatheredCopies::End& end) {
      if (end.error != ERROR_SUCCESS) failed.insert(end.id);
    });
    for (std::uint64_t id = 1; id <= 10; ++id) {
      const std::string name = "target" + std::to_string(id);
      write(name, "old");
      EXPECT_EQ(
          copies.copy(folder_.file("source").c_str(), folder_.file(name).c_str(), false, {}, id),
          platform::GatheredCopies::Outcome::PutOff);
    }
    copies.finish();
    return failed;
  }
  std::string contentOf(const char* name) const { return read(name); }
};

TEST_F(ReplacementFiles, KeepTheTargetThatCannotBeReplaced) {
  EXPECT_EQ(replace(false, 1), Replaced::Refused);
  EXPECT_EQ(contentOf("target"), "old");
  EXPECT_EQ(folder_.entries(), 1U);
}

TEST_F(ReplacementFiles, TakeThePlaceOfATargetThatTheRenameDeleted) {
  EXPECT_EQ(replace(true, 1), Replaced::Yes);
  EXPECT_EQ(contentOf("target"), "new");
  EXPECT_EQ(folder_.entries(), 1U);
}

TEST_F(ReplacementFiles, StayBesideATargetThatIsLost) {
  EXPECT_EQ(replace(true, 1000), Replaced::No);
  EXPECT_EQ(contentOf("target.new"), "new");
  EXPECT_EQ(replace(true, 1000), Replaced::No);
  EXPECT_EQ(contentOf("target.new2"), "new");
}

// Also a process that runs another release.
TEST_F(ReplacementFiles, TakeTheNameThatAKilledProcessLeft) {
  write(".~copy16f3e46051eee3e8.tmp", "killed");
  EXPECT_EQ(replace(false, 0), Replaced::Yes);
  EXPECT_EQ(contentOf("target"), "new");
  EXPECT_EQ(folder_.entries(), 1U);
}

// A limit of the size acts as a full disk does.
TEST_F(ReplacementFiles, AreOverwrittenOnlyIfTheDiskHasSpace) {
  write("source", std::string(300000, 'n'));
  write("target", "old");
  model.isSmb = true;
  EXPECT_FALSE(support::withinSize(100000, [&] { return overwrite(300000); }));
  EXPECT_EQ(contentOf("target"), "old");
  EXPECT_TRUE(overwrite(300000));
  EXPECT_EQ(contentOf("target"), std::string(300000, 'n'));
}

// The file system reports only at the commit that the disk is full.
TEST_F(ReplacementFiles, GetTheirOldSizeBackOnAServerThatIsFull) {
  write("source", std::string(3000, 'n'));
  write("target", "old");
  model.isFullNfs = true;
  EXPECT_FALSE(overwrite(3000));
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(contentOf("target"), "old");
}

// An SMB client takes two openings with the same flags for one, and their locks for those of one.
TEST_F(ReplacementFiles, AreLockedThroughAnOpeningOfTheirOwnOnAnSmbServer) {
  constexpr int kKept = O_ACCMODE | O_APPEND;
  write("target", "old");
  for (const int flags : {O_RDONLY, O_RDWR, O_RDWR | O_APPEND}) {
    SCOPED_TRACE(flags);
    Descriptor file(open(folder_.file("target").c_str(), flags | O_CLOEXEC));
    const int first = file.get();
    model.isSmb = false;
    platform::native::openApart(file);
    EXPECT_EQ(file.get(), first);
    model.isSmb = true;
    platform::native::openApart(file);
    EXPECT_NE(file.get(), first);
    EXPECT_EQ(fcntl(file.get(), F_GETFL) & kKept, flags);
  }
}

TEST_F(ReplacementFiles, AreNotPutInPlaceIfTheyMayNotBeOnTheDisk) {
  if (!support::fileSystem().commonCommit) GTEST_SKIP() << "each has a commit here";
  write("source", "new");
  for (const bool losesUnnoticed : {false, true}) {
    SCOPED_TRACE(losesUnnoticed);
    model = {.losesUnnoticed = losesUnnoticed, .lost = 1};
    EXPECT_EQ(replaceTogether(), (std::set<std::uint64_t>{1}));
    EXPECT_EQ(contentOf("target1"), "old");
    EXPECT_EQ(contentOf("target2"), "new");
    EXPECT_EQ(contentOf("target10"), "new");
  }
}

// A killed process would leave all that wait.
TEST_F(ReplacementFiles, DoNotWaitIfTheyHaveNames) {
  using platform::GatheredCopies;
  model.needsNames = true;
  write("source", "new");
  write("first", "old");
  write("second", "old");
  GatheredCopies copies([](const GatheredCopies::End&) {});
  const std::string source = folder_.file("source");
  copies.copy(source.c_str(), folder_.file("first").c_str(), false, {}, 1);
  EXPECT_EQ(copies.copy(source.c_str(), folder_.file("second").c_str(), false, {}, 2),
            GatheredCopies::Outcome::Copied);
  EXPECT_EQ(contentOf("first"), "new");
}

// A common commit would wait for what all programs have written.
TEST_F(ReplacementFiles, AreCommittedTogetherUnlessMuchIsUnwritten) {
  if (!support::fileSystem().commonCommit) GTEST_SKIP() << "each has a commit here";
  write("source", "new");
  for (const auto& [unwritten, commits] : {std::pair(0, 1), {5120, 1}, {5121, 10}}) {
    SCOPED_TRACE(unwritten);
    model = {.unwritten = unwritten};
    EXPECT_EQ(replaceTogether(), (std::set<std::uint64_t>{}));
    EXPECT_EQ(model.commits, commits);
  }
}

TEST_F(ReplacementFiles, TakeLimitedSpaceWhileTheyWait) {
  constexpr std::uintmax_t kMost = 16 << 20;
  write("source", "new");
  write("first", "old");
  write("second", "old");
  platform::GatheredCopies copies([](const platform::GatheredCopies::End&) {});
  const std::string source = folder_.file("source");
  std::filesystem::resize_file(source, kMost);
  copies.copy(source.c_str(), folder_.file("first").c_str(), false, {}, 1);
  copies.copy(source.c_str(), folder_.file("second").c_str(), false, {}, 2);
  EXPECT_EQ(std::filesystem::file_size(folder_.file("first")), kMost);
}

TEST_F(ReplacementFiles, GoToTheFolderThatHasThePathNow) {
  if (!support::fileSystem().commonCommit) GTEST_SKIP() << "each has a commit here";
  write("source", "new");
  write("folder/first", "old");
  write("folder/second", "old");
  platform::GatheredCopies copies([](const platform::GatheredCopies::End&) {});
  const std::string source = folder_.file("source");
  copies.copy(source.c_str(), folder_.file("folder/first").c_str(), false, {}, 1);
  std::filesystem::rename(folder_.file("folder"), folder_.file("moved"));
  write("folder/second", "old");
  copies.copy(source.c_str(), folder_.file("folder/second").c_str(), false, {}, 2);
  copies.finish();
  EXPECT_EQ(contentOf("folder/first"), "new");
  EXPECT_EQ(contentOf("folder/second"), "new");
  EXPECT_EQ(contentOf("moved/second"), "old");
}

TEST_F(ReplacementFiles, KeepHolesWhereBlocksCannotBeShared) {
  if (!support::fileSystem().largeFiles) GTEST_SKIP() << "no holes here";
  write("source", "new");
  std::filesystem::resize_file(folder_.file("source"), 1 << 20);
  for (const int error : {EOPNOTSUPP, EINVAL}) {
    SCOPED_TRACE(error);
    model.cloneError = error;
    write("target", "old");
    EXPECT_TRUE(CopyFileA(folder_.file("source").c_str(), folder_.file("target").c_str(), FALSE));
    struct stat status {};
    ASSERT_EQ(stat(folder_.file("target").c_str(), &status), 0);
    EXPECT_LT(status.st_blocks, 100);
  }
}

TEST_F(ReplacementFiles, NeedTheTimesOfTheirSources) {
  write("source", "new");
  write("target", "old");
  model.timeError = EIO;
  EXPECT_FALSE(CopyFileA(folder_.file("source").c_str(), folder_.file("target").c_str(), FALSE));
  EXPECT_EQ(contentOf("target"), "old");
}

TEST_F(ReplacementFiles, ThatAreLinksNeedTheirTimesOnlyWhereThePlaceHasThem) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  const Descriptor directory(open(folder_.path().c_str(), O_PATH | O_CLOEXEC));
  platform::native::NewLink link{.target = "nothing", .metadata = {}};
  link.metadata.lastWrite = FILETIME{};
  for (const auto& [error, isMade] : {std::pair(EPERM, true), {EOPNOTSUPP, true}, {EIO, false}}) {
    SCOPED_TRACE(error);
    model.timeError = error;
    std::filesystem::remove(folder_.file("link"));
    EXPECT_EQ(platform::native::createLink(directory.get(), "link", link), isMade);
    EXPECT_EQ(std::filesystem::is_symlink(folder_.file("link")), isMade);
  }
}

TEST_F(ReplacementFiles, HoldTheTargetUnlessItIsOnAServer) {
  EXPECT_EQ(replace(false, 0), Replaced::Yes);
  EXPECT_TRUE(model.wasHeldAtRename);
  EXPECT_EQ(replace(true, 0), Replaced::Yes);
  EXPECT_FALSE(model.wasHeldAtRename);
}

}  // namespace
