#pragma once
// Asking whether a file can be opened.

#include "platform/win32.h"

namespace platform {

// Whether CreateFileA would open this existing file with that access and sharing
// now. Where the system can tell without holding the file meanwhile, nobody else
// is kept from it.
bool probeOpen(const char* path, DWORD access, DWORD share);

// As probeOpen, for reading beside readers and writers, of the file that the
// search delivered last. `path` is its full path; where the system can, the
// search's open folder saves the way along it.
bool probeFound(HANDLE search, const char* path);

}  // namespace platform
