#pragma once
// The content of one open file, copied into another.

#include <sys/types.h>

namespace platform::native {

// Copies what `from` holds after its position, expected to be `size` bytes, to
// `to`, the fastest way that the file systems offer. False, with errno, on
// failure.
bool copyContent(int from, off_t size, int to);

}  // namespace platform::native
