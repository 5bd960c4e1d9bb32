#pragma once
// A number that distinguishes a process from those it was forked from.

#include <cstdint>

namespace platform::native {

// Returns the mark of the calling process: never 0, and never that of a process from which this one
// inherited its memory. It takes no system call but the first time.
std::uint32_t processMark();

}  // namespace platform::native
