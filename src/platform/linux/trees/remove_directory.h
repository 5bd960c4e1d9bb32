#pragma once
// Removing directories.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Removes an empty directory, but no link to one, unless it is read-only or the
// current one of this process. A relative path counts from `folder`, an open
// folder or AT_FDCWD. Returns the Win32 error code; a missing folder on the way
// counts as a missing file.
DWORD removeDirectoryAt(int folder, const char* path);

}  // namespace platform::native
