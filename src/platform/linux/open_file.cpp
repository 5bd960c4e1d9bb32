// CreateFileA: opening with access, sharing and disposition. A file is changed
// only after its sharing was granted.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/existing_file.h"
#include "platform/linux/file_handle.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/linux/share_lock.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

struct Opening {
  DWORD access;
  DWORD share;
  DWORD disposition;
  mode_t mode;  // of a new file

  bool makesFile() const {
    return disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
  }
  bool empties() const { return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING; }
};

// Opens or makes the file and says which. An exclusive making tells a new file
// from one that was there.
Descriptor openOrMake(const char* path, const Opening& opening, bool& made) {
  made = false;
  if (opening.disposition != CREATE_NEW) {
    // A file can be emptied by who may only read the handle.
    const DWORD needed = opening.empties() ? opening.access | GENERIC_WRITE : opening.access;
    Descriptor existing = openExisting(AT_FDCWD, path, needed);
    if (existing || errno != ENOENT || !opening.makesFile()) return existing;
  }
  made = true;
  return Descriptor(openRetrying(AT_FDCWD, path, O_RDWR | O_CREAT | O_EXCL, opening.mode));
}

// Not for good: the file went away or came between two steps.
bool passing(const Opening& opening, bool making, int error) {
  return opening.disposition != CREATE_NEW && making && error == EEXIST;
}

DWORD openError(const Opening& opening, const NativePath& path, int error) {
  if (opening.disposition == CREATE_NEW && error == EEXIST) return ERROR_FILE_EXISTS;
  if (error == EEXIST) return ERROR_ACCESS_DENIED;
  return errorOnPath(path, error);
}

HANDLE invalid(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;
}

HANDLE openFile(const NativePath& path, const Opening& opening) {
  for (int attempt = 1;; ++attempt) {
    bool made = false;
    Descriptor file = openOrMake(path.c_str(), opening, made);
    if (!file) {
      const int error = errno;
      if (passing(opening, made, error) && attempt < kOpenAttempts) continue;
      return invalid(openError(opening, path, error));
    }
    const bool shared = opening.access != 0;
    if (shared && !(made && holdNew(file.get(), opening.access, opening.share)) &&
        acquireShare(file.get(), opening.access, opening.share) != ShareResult::Granted) {
      return invalid(ERROR_SHARING_VIOLATION);
    }

    // Looked at only now, when nobody can delete the file any more.
    struct stat status;
    if (fstat(file.get(), &status) != 0) {
      const DWORD error = errorFromErrno(errno);
      if (made) unlink(path.c_str());
      return invalid(error);
    }
    const bool changes = (opening.access & GENERIC_WRITE) != 0 || opening.empties();
    if (!isOpenable(status, changes && !made)) return invalid(ERROR_ACCESS_DENIED);
    if (status.st_nlink == 0 && attempt < kOpenAttempts) continue;
    if (opening.empties() && status.st_size != 0 && ftruncate(file.get(), 0) != 0) {
      return invalid(errorFromErrno(errno));
    }
    SetLastError(opening.makesFile() && !made ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return makeFileHandle(file.release(), opening.access, status);
  }
}

}  // namespace
}  // namespace platform::native

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                   DWORD disposition, DWORD attributes, HANDLE) {
  using namespace platform::native;
  if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING) {
    return invalid(ERROR_INVALID_PARAMETER);
  }
  if (disposition == TRUNCATE_EXISTING && (access & GENERIC_WRITE) == 0) {
    return invalid(ERROR_INVALID_PARAMETER);
  }
  const NativePath native(path);
  if (!native.valid()) return invalid(native.error());
  // Only a folder can have a separator behind its name.
  if (native.hadTrailingSeparator()) return invalid(ERROR_PATH_NOT_FOUND);

  constexpr mode_t kAll = 0666;
  constexpr mode_t kReadOnly = 0444;
  return openFile(native, {.access = access & (GENERIC_READ | GENERIC_WRITE),
                           .share = share,
                           .disposition = disposition,
                           .mode = (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? kReadOnly : kAll});
}
