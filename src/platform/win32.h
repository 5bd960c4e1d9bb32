#pragma once
// The operating system, by its Win32 names. On Windows the system provides them.
// On Linux src/platform/linux provides the subset that the library calls, with
// the same meaning.

#if defined(_WIN32)
#include "platform/windows/win32_windows.h"
#else
#include "platform/linux/win32_linux.h"
#endif
