#pragma once
// The one door to the operating system. Library code calls the platform by its
// Win32 names; on Windows they are the system's, elsewhere src/platform/linux
// provides exactly the subset below, with Windows' meaning.

#if defined(_WIN32)
#include "platform/windows/win32_windows.h"
#else
#include "platform/linux/win32_linux.h"
#endif
