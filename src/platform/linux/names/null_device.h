#pragma once
// The device that takes all that is written to it, and has nothing to read.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Reports whether a path text names the device: `NUL` or `\\.\NUL`, in any letter case. A file
// `NUL` of the current folder that another program created is reached by that name, not the device;
// and with a folder before it the name is always that of a file.
bool isNullDevice(const char* text);

// Opens the device with specific rights. It has no share modes.
HANDLE openNullDevice(DWORD rights);

}  // namespace platform::native
