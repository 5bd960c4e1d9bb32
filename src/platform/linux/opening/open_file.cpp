// CreateFileA: opening with rights, share mode and disposition. A file is
// changed only after its share mode was granted.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/names/null_device.h"
#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/opening/remote_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

struct Opening {
  DWORD rights;  // specific ones
  DWORD share;
  DWORD disposition;
  bool makesReadOnly;  // a new file

  bool creates() const { return disposition != OPEN_EXISTING; }
  bool truncates() const { return disposition == CREATE_ALWAYS; }
  bool changes() const { return writes(rights) || truncates(); }
};

enum class Outcome { Done, Failed, Retry };

struct Opened {
  Descriptor file;
  bool created = false;
  bool mayBeRemote = false;
};

// Opens the file that has the name. Retry if there is none.
Outcome openExisting(const char* path, const Opening& opening, Opened& opened) {
  struct stat status;
  if (fstatat(AT_FDCWD, path, &status, 0) == 0) {
    if (!isOpenable(status, opening.changes())) {
      errno = EACCES;
      return Outcome::Failed;
    }
    // Truncating needs the right to write, whatever the handle gets.
    const DWORD needed = opening.rights | (opening.truncates() ? DWORD{FILE_WRITE_DATA} : 0);
    opened.file = openRegular(AT_FDCWD, path, needed);
    opened.mayBeRemote = mayBeRemote(status);
    if (opened.file) return Outcome::Done;
  }
  return errno == ENOENT ? Outcome::Retry : Outcome::Failed;
}

bool isLink(const char* path) {
  struct stat status;
  return lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
}

// Opens or creates the file. Creating is exclusive, so that a new file is known
// from one that was there. Retry, with errno, if another process created the file
// at the same time. Exclusive creation never follows a link, so the file that a
// dangling one leads to counts as one that was there: another process may have
// created it first. Only the kernel follows it, as it knows who may do so.
Outcome openOrCreate(const char* path, const Opening& opening, Opened& opened) {
  if (opening.disposition != CREATE_NEW) {
    const Outcome outcome = openExisting(path, opening, opened);
    if (outcome != Outcome::Retry) return outcome;
    if (!opening.creates()) return Outcome::Failed;
  }
  constexpr mode_t kAll = 0666;
  constexpr mode_t kReadOnly = 0444;
  const int append = appendsOnly(opening.rights) ? O_APPEND : 0;
  const int flags = O_RDWR | O_CREAT | append;
  opened.file = Descriptor(
      openRetrying(AT_FDCWD, path, flags | O_EXCL, opening.makesReadOnly ? kReadOnly : kAll));
  opened.created = static_cast<bool>(opened.file);
  if (opened.created) return Outcome::Done;
  if (errno != EEXIST || opening.disposition == CREATE_NEW) return Outcome::Failed;
  if (!isLink(path)) {
    errno = EEXIST;
    return Outcome::Retry;
  }
  opened.file = Descriptor(openRetrying(AT_FDCWD, path, flags, kAll));
  opened.mayBeRemote = true;
  return opened.file ? Outcome::Done : Outcome::Failed;
}

DWORD openError(const Opening& opening, const NativePath& path, int error) {
  if (error != EEXIST) return errorOnPath(path, error);
  return opening.disposition == CREATE_NEW ? ERROR_FILE_EXISTS : ERROR_ACCESS_DENIED;
}

Outcome failed(DWORD error) {
  SetLastError(error);
  return Outcome::Failed;
}

// Only a folder can have a separator after its name.
DWORD trailingError(const Opening& opening, const NativePath& path) {
  TrailingSeparatorErrors errors{.folder = ERROR_PATH_NOT_FOUND};
  if (opening.creates()) errors.missing = ERROR_INVALID_NAME;
  if (opening.disposition == CREATE_NEW) errors.folder = errors.file = ERROR_FILE_EXISTS;
  return trailingSeparatorError(path, errors);
}

bool isDeleted(int descriptor) {
  struct stat status;
  return fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

// Takes the locks. Retry if they were refused on a file that has no name any
// more: another one can have its name.
Outcome acquire(Opened& opened, const Opening& opening) {
  if (opening.rights == 0) return Outcome::Done;
  if (acquireShare(opened.file, opening.rights, opening.share, opened.mayBeRemote)) {
    return Outcome::Done;
  }
  SetLastError(ERROR_SHARING_VIOLATION);
  return isDeleted(opened.file.get()) ? Outcome::Retry : Outcome::Failed;
}

// Checks the open file again, now that no one else can delete it, and truncates
// it if the disposition says so. Retry if the file was deleted before.
Outcome finish(int descriptor, const Opening& opening, bool created) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) return failed(errorFromErrno(errno));
  if (!created && !isOpenable(status, opening.changes())) return failed(ERROR_ACCESS_DENIED);
  if (status.st_nlink == 0) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return Outcome::Retry;
  }
  if (opening.truncates() && status.st_size != 0 && ftruncate(descriptor, 0) != 0) {
    return failed(errorFromErrno(errno));
  }
  // The process's umask must not make the file one that its creator cannot write.
  if (created && !opening.makesReadOnly && isReadOnly(status.st_mode)) {
    fchmod(descriptor, (status.st_mode & 07777) | S_IWUSR);
  }
  return Outcome::Done;
}

HANDLE openFile(const NativePath& path, const Opening& opening) {
  for (int attempt = 1;; ++attempt) {
    Opened opened;
    Outcome outcome = openOrCreate(path.c_str(), opening, opened);
    if (outcome != Outcome::Done) SetLastError(openError(opening, path, errno));
    if (outcome == Outcome::Done) outcome = acquire(opened, opening);
    if (outcome == Outcome::Done) {
      outcome = finish(opened.file.get(), opening, opened.created);
      if (outcome == Outcome::Failed && opened.created) unlink(path.c_str());
    }
    if (outcome == Outcome::Retry && attempt < kOpenAttempts) continue;
    if (outcome != Outcome::Done) return INVALID_HANDLE_VALUE;

    const HANDLE handle = makeFileHandle(std::move(opened.file), opening.rights);
    if (handle == INVALID_HANDLE_VALUE) return handle;
    SetLastError(opening.creates() && !opened.created ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
  }
}

}  // namespace
}  // namespace platform::native

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                   DWORD disposition, DWORD attributes, HANDLE) {
  using namespace platform::native;
  const DWORD rights = specificRights(access);
  if (isNullDevice(path)) return openNullDevice(rights);
  const NativePath native(path);
  if (!native.valid()) return invalidHandle(native.error());
  const Opening opening{.rights = rights,
                        .share = share,
                        .disposition = disposition,
                        .makesReadOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0};
  if (native.hadTrailingSeparator()) return invalidHandle(trailingError(opening, native));
  return openFile(native, opening);
}
