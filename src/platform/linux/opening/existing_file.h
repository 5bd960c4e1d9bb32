#pragma once
// Opening files that exist. A relative path counts from `folder`, an open folder
// or AT_FDCWD. Rights are specific ones.

#include <sys/stat.h>

#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/descriptor.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {

// Attempts to open a file that other processes delete, replace or create at the
// same time.
inline constexpr int kOpenAttempts = 100;

// Calls openat, so that it neither blocks nor is interrupted by a signal.
int openRetrying(int folder, const char* path, int flags, mode_t mode = 0);

// True if CreateFileA opens files of this status: regular ones, which are not
// read-only if the opening `changes` them.
bool isOpenable(const struct stat& status, bool changes);

// Opens a regular file for the rights and, where that is possible, for reading
// too. The caller has checked the type before: opening a FIFO wakes a process
// that waits for its other end, and opening a device can set it going.
Descriptor openRegular(int folder, const char* path, DWORD rights);

// The errors of using a path as that of a file although it ends in a separator, if
// a folder or a file has the name, or none.
struct TrailingSeparatorErrors {
  DWORD folder = ERROR_ACCESS_DENIED;
  DWORD file = ERROR_INVALID_NAME;
  DWORD missing = ERROR_FILE_NOT_FOUND;
};
DWORD trailingSeparatorError(const NativePath& path, const TrailingSeparatorErrors& errors);

// Reports whether the file can be opened with these rights and this share mode
// now. If not, the error is set.
bool probeExisting(int folder, const char* path, DWORD rights, DWORD share);

// Does the same for a name that its folder lists as that of a regular file.
bool probeRegular(int folder, const char* path, DWORD rights, DWORD share);

}  // namespace platform::native
