#pragma once
// Files that are read, and why one cannot be.

#include <filesystem/results.h>

#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem::Detail {

// Opens a file as the library reads it: others may read and write it meanwhile.
platform::FileHandle openSource(const char* path);

// Returns why a file could not be opened, with the system's error.
Reason reasonForUnopened(const char* path, DWORD error);

// Returns why a file cannot be opened now; Reason::None if it can.
Reason reasonForSource(const char* path);

}  // namespace FileSystem::Detail
