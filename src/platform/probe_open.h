#pragma once
// Checks whether a file can be opened.

#include "platform/win32.h"

namespace platform {

// Reports whether CreateFileA would open this existing file with that access and
// share mode now. On Linux the check keeps no one else from opening the file.
bool probeOpen(const char* path, DWORD access, DWORD share);

// Reports whether the file that the search returned last can be opened for
// reading, with readers and writers shared. `path` is its full path. On Linux the
// file is opened relative to the search's folder instead.
bool probeFound(HANDLE search, const char* path);

}  // namespace platform
