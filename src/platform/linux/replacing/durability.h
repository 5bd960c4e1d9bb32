#pragma once
// Making changes survive a power failure.

#include <vector>

namespace platform::native {

// Waits until the content and the size of a file are on the disk. False, with errno, on failure.
bool commitContent(int descriptor);

// Reports whether the file is on a file system where commitTogether() commits all files at once.
bool canCommitTogether(int descriptor);

// Does the same as commitContent() for several files of one such file system, for hardly more than
// the cost of one. That commits all that was written there, by anyone, so it is not tried if this is
// much. False if any of the files may not be on the disk.
bool commitTogether(const std::vector<int>& descriptors);

// Waits until the name `path` is on the disk after a rename. There is no result, because a rename
// that was done cannot be reported as failed.
void commitNameOf(const char* path);

}  // namespace platform::native
