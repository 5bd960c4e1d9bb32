#pragma once
// Copying the content of one open file to another.

#include <sys/types.h>

namespace platform::native {

// Copies the bytes after the position of `from`, expected to be `size`, to the
// position of `to`. False, with errno, on failure.
bool copyBytes(int from, off_t size, int to);

// Copies a whole file to a new one. File systems that can do so let both share
// their blocks.
bool copyContent(int from, off_t size, int to);

}  // namespace platform::native
