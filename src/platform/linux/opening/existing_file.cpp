#include "platform/linux/opening/existing_file.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {

int openRetrying(int folder, const char* path, int flags, mode_t mode) {
  int descriptor;
  do {
    descriptor = ::openat(folder, path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

bool isOpenable(const struct stat& status, bool changes) {
  return S_ISREG(status.st_mode) && !(changes && isReadOnly(status.st_mode));
}

// The locks of share modes need a descriptor that reads. A file is opened for
// writing alone only if it cannot be opened for both, and is shared freely then.
Descriptor openRegular(int folder, const char* path, DWORD rights) {
  if (!writes(rights)) return Descriptor(openRetrying(folder, path, O_RDONLY));
  const int append = appendsOnly(rights) ? O_APPEND : 0;
  Descriptor both(openRetrying(folder, path, O_RDWR | append));
  if (both || errno != EACCES || reads(rights)) return both;
  return Descriptor(openRetrying(folder, path, O_WRONLY | append));
}

DWORD trailingSeparatorError(const NativePath& path, const TrailingSeparatorErrors& errors) {
  struct stat status;
  if (stat(path.c_str(), &status) == 0)
    return S_ISDIR(status.st_mode) ? errors.folder : errors.file;
  const DWORD error = errorOnPath(path, errno);
  return error == ERROR_FILE_NOT_FOUND ? errors.missing : error;
}

bool probeExisting(int folder, const char* path, DWORD rights, DWORD share) {
  struct stat status;
  if (fstatat(folder, path, &status, 0) != 0) return failWithErrno() != FALSE;
  if (!isOpenable(status, writes(rights))) return fail(ERROR_ACCESS_DENIED) != FALSE;
  return probeRegular(folder, path, rights, share);
}

bool probeRegular(int folder, const char* path, DWORD rights, DWORD share) {
  for (int attempt = 1;; ++attempt) {
    const Descriptor file = openRegular(folder, path, rights);
    if (!file) return failWithErrno() != FALSE;
    if (shareAvailable(file.get(), rights, share)) return true;
    // Another file may have the name by now.
    struct stat status;
    const bool isGone = fstat(file.get(), &status) == 0 && status.st_nlink == 0;
    if (!isGone || attempt == kOpenAttempts) return fail(ERROR_SHARING_VIOLATION) != FALSE;
  }
}

}  // namespace platform::native
