#pragma once
// Deleting what a search finds.

#include "platform/win32.h"

namespace platform {

// As DeleteFileA for the file that the search delivered last. `path` is its full
// path; where the system can, the search's open folder saves the way along it.
// The search goes on with the folder's other entries.
bool deleteFound(HANDLE search, const char* path);

}  // namespace platform
