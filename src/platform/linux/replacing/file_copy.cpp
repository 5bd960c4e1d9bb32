#include "platform/linux/replacing/file_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/metadata/write_time.h"
#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/opening/new_file.h"
#include "platform/linux/opening/remote_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/replacing/overwriting.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/trees/copy_content.h"

namespace platform::native {
namespace {

constexpr mode_t kPermissions = 01777;  // without set-id bits

TargetState failed(DWORD error) {
  SetLastError(error);
  return TargetState::Failed;
}

// Finds the file that the path leads to, and opens it if a copy of the source may take its place.
TargetState openFound(const NativePath& path, const Source& source, Target& target) {
  if (!findFile(path, target.path, target.status)) {
    return errno == ENOENT ? TargetState::Missing : failed(errorOnPath(path, errno));
  }
  if (isSameFile(target.status, source.status)) return failed(ERROR_SHARING_VIOLATION);
  if (!isOpenable(target.status, true)) return failed(ERROR_ACCESS_DENIED);
  target.held = openRegular(AT_FDCWD, target.path.c_str(), FILE_WRITE_DATA);
  if (target.held) return TargetState::Ready;
  return errno == ENOENT ? TargetState::Changed : failed(errorOnPath(path, errno));
}

// Reads the status of the open target. Its former holder may have put another file in its place.
TargetState confirm(Target& target) {
  struct stat current;
  if (fstat(target.held.get(), &target.status) != 0) return failed(errorFromErrno(errno));
  const bool isCurrent =
      lstat(target.path.c_str(), &current) == 0 && isSameFile(current, target.status);
  return isCurrent ? TargetState::Ready : TargetState::Changed;
}

// Takes the locks of a writer. False if the holders do not permit that.
bool lockForWriting(Target& target) {
  constexpr DWORD kShareReading = FILE_SHARE_READ | FILE_SHARE_DELETE;
  const bool isRemote = mayBeRemote(target.status);
  if (acquireShare(target.held, FILE_WRITE_DATA, kShareReading, isRemote)) {
    target.isShared = target.whenHeld == HeldTarget::Overwrite && isHeldByOthers(target.held.get());
    return true;
  }
  target.isShared = true;
  return target.whenHeld == HeldTarget::Overwrite &&
         acquireShare(target.held, FILE_WRITE_DATA, kShareReading | FILE_SHARE_WRITE, isRemote);
}

mode_t removedBy(const Source& source) { return isReadOnly(source.status.st_mode) ? kAnyWrite : 0; }

// Replaces the target by a complete copy. With Refused it may have been closed.
Replaced replaceWhole(const Source& source, Target& target, const CopyProgress& progress) {
  WholeCopy copy(target);
  const Replaced made = copy.make(source, progress);
  if (made != Replaced::Yes) return made;
  return commitContent(copy.descriptor()) ? copy.putInPlace() : Replaced::No;
}

bool overwrite(const Source& source, Target& target, const CopyProgress& progress) {
  const int descriptor = target.held.get();
  if (!target.isShared) holdExclusively(descriptor);
  if (!overwriteContent(source.descriptor, source.status.st_size, target.status, descriptor,
                        progress)) {
    return false;
  }
  const mode_t removed = removedBy(source) & target.status.st_mode;
  const bool isComplete =
      (removed == 0 || fchmod(descriptor, target.status.st_mode & kPermissions & ~removed) == 0) &&
      setWriteTime(descriptor, source.status.st_mtim, target.status.st_mtim);
  // The right to write does not include that to set times and permissions.
  return (isComplete || errno == EPERM) && target.held.close();
}

// Opens and locks a target again that an attempt to replace it closed.
bool lockAgain(Target& target) {
  if (target.held) return true;
  const int error = errno;
  struct stat now;
  target.held = openRegular(AT_FDCWD, target.path.c_str(), FILE_WRITE_DATA);
  if (target.held && fstat(target.held.get(), &now) == 0 && isSameFile(now, target.status) &&
      lockForWriting(target)) {
    return true;
  }
  errno = error;
  return false;
}

}  // namespace

bool findFile(const NativePath& path, std::string& file, struct stat& status) {
  file = path.c_str();
  if (lstat(path.c_str(), &status) != 0) return false;
  if (!S_ISLNK(status.st_mode)) return true;
  char real[PATH_MAX];
  if (realpath(path.c_str(), real) == nullptr || stat(real, &status) != 0) return false;
  file = real;
  return true;
}

bool openSource(const char* text, Source& source) {
  source.handle.reset(
      CreateFileA(text, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!source.handle) return false;
  source.descriptor = descriptorOf(source.handle.get());
  return fstat(source.descriptor, &source.status) == 0 || failWithErrno() != FALSE;
}

TargetState lockTarget(const NativePath& path, const Source& source, Target& target) {
  const TargetState opened = openFound(path, source, target);
  if (opened != TargetState::Ready) return opened;
  return lockForWriting(target) ? confirm(target) : failed(ERROR_SHARING_VIOLATION);
}

TargetState openTarget(const NativePath& path, const Source& source, Target& target) {
  const TargetState opened = openFound(path, source, target);
  if (opened != TargetState::Ready) return opened;
  return isHeldByOthers(target.held.get()) ? TargetState::Changed : confirm(target);
}

Replaced WholeCopy::make(const Source& source, const CopyProgress& progress) {
  const std::string folder = folderOf(target_.path);
  if (folder_ == nullptr || folder_->path != folder) {
    Descriptor opened(openRetrying(AT_FDCWD, folder.c_str(), O_PATH | O_DIRECTORY));
    folder_ = std::make_shared<const Folder>(Folder{folder, std::move(opened)});
  }
  if (!folder_->descriptor) return isRefusal(errno) ? Replaced::Refused : Replaced::No;
  file_.emplace(Place{.directory = folder_->descriptor.get(),
                      .name = nameOf(target_.path.c_str()),
                      .status = target_.status,
                      .held = &target_.held},
                ReplacementFile::Named::AtTheEnd);
  if (!*file_) return isRefusal(errno) ? Replaced::Refused : Replaced::No;
  if (!file_->keepsOwner()) return Replaced::Refused;
  if (!copyContent(source.descriptor, source.status, descriptor(), progress)) return Replaced::No;
  const Replaced prepared = file_->prepare(removedBy(source));
  if (prepared != Replaced::Yes) return prepared;
  const bool isTimeSet = setWriteTime(descriptor(), source.status.st_mtim, target_.status.st_mtim);
  return isTimeSet ? Replaced::Yes : Replaced::No;
}

Replaced WholeCopy::putInPlace() {
  // Another process may have opened the target during the copying.
  if (target_.whenHeld == HeldTarget::Overwrite && !holdExclusively(target_.held.get())) {
    return Replaced::Refused;
  }
  return file_->putInPlace();
}

FileIdentity WholeCopy::identity() const {
  struct stat status {};
  fstat(descriptor(), &status);
  return identityOf(status);
}

// The copy has the owner, the permissions and the attributes that the target had.
bool WholeCopy::lockTargetAgain() {
  struct stat now;
  const struct stat& old = target_.status;
  return lockAgain(target_) && isReplaceable(target_) && lstat(target_.path.c_str(), &now) == 0 &&
         isSameFile(now, old) && now.st_mode == old.st_mode && now.st_uid == old.st_uid &&
         now.st_gid == old.st_gid && now.st_ctim.tv_sec == old.st_ctim.tv_sec &&
         now.st_ctim.tv_nsec == old.st_ctim.tv_nsec;
}

bool isReplaceable(const Target& target) { return !target.isShared && target.status.st_nlink == 1; }

bool copyOver(const Source& source, Target& target, const CopyProgress& progress) {
  if (isReplaceable(target)) {
    const Replaced result = replaceWhole(source, target, progress);
    if (result != Replaced::Refused) return result == Replaced::Yes;
    if (!lockAgain(target)) return false;
  }
  return overwrite(source, target, progress);
}

bool copyToNew(const Source& source, const NativePath& path, const CopyProgress& progress) {
  NewFile file(AT_FDCWD, path.c_str(), source.status.st_mode & 0777);
  return file && file.copyFrom(source.descriptor, source.status, progress);
}

}  // namespace platform::native
