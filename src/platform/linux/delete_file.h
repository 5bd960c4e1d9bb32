#pragma once
// Deleting files.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Deletes a file that nobody holds without delete sharing; of a link the link,
// whatever is behind it. A relative path counts from `folder`, an open folder or
// AT_FDCWD. Gives the Win32 error code; a missing folder counts as a missing file.
DWORD deleteAt(int folder, const char* path);

}  // namespace platform::native
