#pragma once
// Making changes survive a power failure.

namespace platform::native {

// Waits until the content and the size of a file are on the disk. False, with errno, on failure.
bool commitContent(int descriptor);

// Waits until the name `path` is on the disk after a rename. There is no result, because a rename
// that was done cannot be reported as failed.
void commitNameOf(const char* path);

}  // namespace platform::native
