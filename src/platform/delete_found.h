#pragma once
// Deleting what a search finds.

#include <string>

#include "platform/win32.h"

namespace platform {

// As DeleteFileA for the file that the search delivered last, by the name `name`.
// `folder` is the searched folder's path, with separator; where the system can,
// the search's open folder saves the way along it. The search goes on with the
// folder's other entries.
bool deleteFound(HANDLE search, const std::string& folder, const char* name);

}  // namespace platform
