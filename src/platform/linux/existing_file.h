#pragma once
// Opening files that are there. A relative path counts from `folder`, an open
// folder or AT_FDCWD.

#include <sys/stat.h>

#include "platform/linux/descriptor.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {

// Openings in a row that meet a file which somebody deletes, replaces or makes
// at the same instant.
inline constexpr int kOpenAttempts = 100;

// As openat, in a way that neither waits nor is cut short by a signal.
int openRetrying(int folder, const char* path, int flags, mode_t mode = 0);

// Opens for the access, and where that is possible for reading too.
Descriptor openExisting(int folder, const char* path, DWORD access);

// Whether what has that status is a file that can be opened at all, for changes
// or without.
bool isOpenable(const struct stat& status, bool changes);

// Whether the file can be opened with that access and sharing now.
bool probeExisting(int folder, const char* path, DWORD access, DWORD share);

}  // namespace platform::native
