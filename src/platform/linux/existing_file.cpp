#include "platform/linux/existing_file.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/linux/attributes.h"
#include "platform/linux/share_lock.h"

namespace platform::native {

int openRetrying(int folder, const char* path, int flags, mode_t mode) {
  int descriptor;
  do {
    descriptor = ::openat(folder, path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

// The locks need a descriptor that reads, so a file is opened for writing alone
// only if it cannot be opened for both; its sharing is not enforced then.
Descriptor openExisting(int folder, const char* path, DWORD access) {
  if ((access & GENERIC_WRITE) == 0) return Descriptor(openRetrying(folder, path, O_RDONLY));
  Descriptor both(openRetrying(folder, path, O_RDWR));
  if (both || errno != EACCES || (access & GENERIC_READ) != 0) return both;
  return Descriptor(openRetrying(folder, path, O_WRONLY));
}

bool isOpenable(const struct stat& status, bool changes) {
  return S_ISREG(status.st_mode) && !(changes && isReadOnly(status.st_mode));
}

bool probeExisting(int folder, const char* path, DWORD access, DWORD share) {
  for (int attempt = 1;; ++attempt) {
    const Descriptor file = openExisting(folder, path, access);
    struct stat status;
    if (!file || fstat(file.get(), &status) != 0) return false;
    if (status.st_nlink == 0 && attempt < kOpenAttempts) continue;
    return isOpenable(status, (access & GENERIC_WRITE) != 0) &&
           shareAvailable(file.get(), access, share);
  }
}

}  // namespace platform::native
