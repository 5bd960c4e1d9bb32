#pragma once
// Making changes survive a power failure.

namespace platform::native {

// Waits until the content and the size of a file are on the disk. False, with errno, on failure.
bool commitContent(int descriptor);

// Waits until the names in the directory of `path` are on the disk. Failure cannot be reported to any
// use: the rename that precedes it is done.
void commitNameOf(const char* path);

}  // namespace platform::native
