#pragma once
// Error codes of the calling thread, and how errno maps to them.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Returns the Win32 code of an errno value. A missing last component (ENOENT) is
// ERROR_FILE_NOT_FOUND; see errorOnPath for a missing folder before it.
DWORD errorFromErrno(int error);

// Sets the error and returns FALSE, so that failing is one statement.
BOOL fail(DWORD error);

// Fails with the code of errno.
BOOL failWithErrno();

// Sets the error and returns INVALID_HANDLE_VALUE.
HANDLE invalidHandle(DWORD error);

}  // namespace platform::native
