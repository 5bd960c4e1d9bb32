#pragma once
// Setting the time of a file's last write.

#include <ctime>

namespace platform::native {

// Sets the time of the last write. A file system that stores coarser times would round it down, and
// a copy would be older than its source: the next later time that it can store is set there, as on
// Windows. `stored` is a time that the file system has stored before. If that shows that it stores
// parts of file times, which are 100 nanoseconds, the time is not read back. False, with errno, on
// failure.
bool setWriteTime(int descriptor, const struct timespec& time, const struct timespec& stored);

}  // namespace platform::native
