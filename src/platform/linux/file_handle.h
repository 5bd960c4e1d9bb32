#pragma once
// What a file handle is made of: the descriptor, the granted access, and a tag
// of the file's identity that tells a stale handle from the file that got its
// descriptor afterwards.

#include <sys/stat.h>

#include "platform/linux/win32_linux.h"

namespace platform::native {

// `status` is that of the open file.
HANDLE makeFileHandle(int descriptor, DWORD access, const struct stat& status);

// -1 for INVALID_HANDLE_VALUE and values that no open can have given.
int descriptorOf(HANDLE handle);

// Whether the handle was opened with this access.
bool grants(HANDLE handle, DWORD access);

// Whether the descriptor is still open on the handle's file.
bool isCurrent(HANDLE handle);

}  // namespace platform::native
