#include "platform/linux/file_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "platform/linux/access_rights.h"
#include "platform/linux/attributes.h"
#include "platform/linux/copy_content.h"
#include "platform/linux/existing_file.h"
#include "platform/linux/file_handle.h"
#include "platform/linux/last_error.h"
#include "platform/linux/replacement_file.h"
#include "platform/linux/share_lock.h"

namespace platform::native {
namespace {

constexpr mode_t kPermissions = 07777;

// Finds the file itself, past all links. Most names are no links and need no
// resolution.
TargetState findTarget(const NativePath& path, Target& target) {
  target.path = path.c_str();
  char real[PATH_MAX];
  bool found = lstat(path.c_str(), &target.status) == 0;
  if (found && S_ISLNK(target.status.st_mode)) {
    found = realpath(path.c_str(), real) != nullptr && stat(real, &target.status) == 0;
    if (found) target.path = real;
  }
  if (found) return TargetState::Locked;
  if (errno == ENOENT) return TargetState::Missing;
  SetLastError(errorOnPath(path, errno));
  return TargetState::Failed;
}

// Takes the locks of a writer. False if the holders do not permit that.
bool lockForWriting(Target& target) {
  constexpr DWORD kShareReading = FILE_SHARE_READ | FILE_SHARE_DELETE;
  const int descriptor = target.held.get();
  if (acquireShare(target.held, FILE_WRITE_DATA, kShareReading)) {
    target.isShared = target.whenHeld == HeldTarget::Overwrite && isHeldByOthers(descriptor);
    return true;
  }
  target.isShared = true;
  return target.whenHeld == HeldTarget::Overwrite &&
         acquireShare(target.held, FILE_WRITE_DATA, kShareReading | FILE_SHARE_WRITE);
}

struct timespec unchangedTime() {
  return {.tv_sec = 0, .tv_nsec = UTIME_OMIT};
}

bool setWriteTime(const Source& source, int descriptor) {
  const struct timespec times[] = {unchangedTime(), source.status.st_mtim};
  return futimens(descriptor, times) == 0;
}

mode_t permissionsAfter(const Source& source, const Target& target) {
  const mode_t mode = target.status.st_mode & kPermissions;
  return isReadOnly(source.status.st_mode) ? mode & ~kAnyWrite : mode;
}

enum class Replacement { Done, Failed, Refused };

Replacement failure() { return isRefusal(errno) ? Replacement::Refused : Replacement::Failed; }

Replacement replaceWhole(const Source& source, const Target& target) {
  constexpr mode_t kOwnerOnly = 0600;
  const Descriptor folder(::open(folderOf(target.path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return failure();
  ReplacementFile file(folder.get(), target.status, kOwnerOnly);
  if (!file) return failure();
  const int descriptor = file.descriptor();
  if (fchown(descriptor, target.status.st_uid, target.status.st_gid) != 0) {
    return Replacement::Refused;
  }
  if (!copyContent(source.descriptor, source.status.st_size, descriptor) ||
      fchmod(descriptor, permissionsAfter(source, target)) != 0 ||
      !setWriteTime(source, descriptor)) {
    return Replacement::Failed;
  }
  // Another process may have opened the target during the copying.
  if (target.whenHeld == HeldTarget::Overwrite && !holdExclusively(target.held.get())) {
    return Replacement::Refused;
  }
  return file.putInPlace(nameOf(target.path.c_str())) ? Replacement::Done : failure();
}

// Writes over the content. Blocks that it lacks are reserved first, so that a full
// disk is noticed while the old content is complete.
bool overwrite(const Source& source, const Target& target) {
  const int descriptor = target.held.get();
  const off_t size = source.status.st_size;
  if (!target.isShared) holdExclusively(descriptor);
  if (fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, size) != 0 &&
      (errno == ENOSPC || errno == EDQUOT || errno == EFBIG)) {
    return false;
  }
  if (lseek(source.descriptor, 0, SEEK_SET) != 0 ||
      !copyBytes(source.descriptor, size, descriptor)) {
    return false;
  }
  if (ftruncate(descriptor, lseek(descriptor, 0, SEEK_CUR)) != 0) return false;
  const mode_t mode = permissionsAfter(source, target);
  const bool isComplete =
      (mode == (target.status.st_mode & kPermissions) || fchmod(descriptor, mode) == 0) &&
      setWriteTime(source, descriptor);
  // The right to write does not include that to set times and permissions.
  return isComplete || errno == EPERM;
}

}  // namespace

bool openSource(const char* text, Source& source) {
  source.handle.reset(
      CreateFileA(text, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!source.handle) return false;
  source.descriptor = descriptorOf(source.handle.get());
  return fstat(source.descriptor, &source.status) == 0 || failWithErrno() != FALSE;
}

TargetState lockTarget(const NativePath& path, const Source& source, Target& target) {
  const auto failed = [](DWORD error) {
    SetLastError(error);
    return TargetState::Failed;
  };
  const TargetState found = findTarget(path, target);
  if (found != TargetState::Locked) return found;
  if (isSameFile(target.status, source.status)) return failed(ERROR_SHARING_VIOLATION);
  if (!isOpenable(target.status, true)) return failed(ERROR_ACCESS_DENIED);
  target.held = openRegular(AT_FDCWD, target.path.c_str(), FILE_WRITE_DATA);
  if (!target.held) {
    return errno == ENOENT ? TargetState::Changed : failed(errorOnPath(path, errno));
  }
  if (!lockForWriting(target)) return failed(ERROR_SHARING_VIOLATION);
  // The holder before may have put another file in its place.
  struct stat current;
  if (fstat(target.held.get(), &target.status) != 0) return failed(errorFromErrno(errno));
  const bool isCurrent =
      lstat(target.path.c_str(), &current) == 0 && isSameFile(current, target.status);
  return isCurrent ? TargetState::Locked : TargetState::Changed;
}

bool copyOver(const Source& source, Target& target) {
  if (!target.isShared && target.status.st_nlink == 1) {
    const Replacement result = replaceWhole(source, target);
    if (result != Replacement::Refused) return result == Replacement::Done;
  }
  return overwrite(source, target);
}

bool copyToNew(const Source& source, const NativePath& path) {
  const mode_t mode = source.status.st_mode & 0777;
  Descriptor file(openRetrying(AT_FDCWD, path.c_str(), O_RDWR | O_CREAT | O_EXCL, mode));
  if (!file) return false;
  holdUnfinished(file);
  if (copyContent(source.descriptor, source.status.st_size, file.get()) &&
      setWriteTime(source, file.get())) {
    return true;
  }
  const int error = errno;
  unlink(path.c_str());
  errno = error;
  return false;
}

}  // namespace platform::native
