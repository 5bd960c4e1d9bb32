#pragma once
// Error codes of the calling thread, and how errno maps to them.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// The Win32 code of an errno value. A missing last component (ENOENT) is
// ERROR_FILE_NOT_FOUND; callers that know the folder to be missing say
// ERROR_PATH_NOT_FOUND themselves.
DWORD errorFromErrno(int error);

// Sets the error and gives FALSE, so that failing is one statement.
BOOL fail(DWORD error);

// As fail(errorFromErrno(errno)).
BOOL failWithErrno();

}  // namespace platform::native
