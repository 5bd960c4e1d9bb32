#pragma once
// Deleting files.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Deletes a file, or a link itself, unless it is read-only or held without delete
// sharing. A relative path counts from `folder`, an open folder or AT_FDCWD.
// Returns the Win32 error code; a missing folder counts as a missing file.
DWORD deleteAt(int folder, const char* path);

// Does the same for a name that its folder lists as that of a regular file, with
// one system call less on a path.
DWORD deleteRegularAt(int folder, const char* path);

// Deletes such a file if no handle holds it and it can be opened for reading. In any other case this
// returns ERROR_SHARING_VIOLATION, and the reason has to be found out.
DWORD deleteUnheldAt(int folder, const char* name);

// Returns the error that deleteAt() would have now for the file or link of that name in an open
// folder.
DWORD deletionError(int folder, const char* name);

}  // namespace platform::native
