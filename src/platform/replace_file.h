#pragma once
// Putting a new version in the place of a file that was read before.

#include "platform/win32.h"

namespace platform {

// Replaces the file at `path` by a copy of the file `version`, but only while it
// still is the file that is open in `opened`: what somebody else put in its place
// meanwhile stays. Where the system copies into the file, and so cannot put
// another in its place, that is always so.
bool replaceFile(HANDLE opened, const char* path, const char* version);

// Removes what a process left beside the file when it was killed while it put a
// new version in its place. The file at `path` is open in `opened`, against
// writers, so that nobody is about to replace it.
void removeUnfinishedVersion(HANDLE opened, const char* path);

}  // namespace platform
