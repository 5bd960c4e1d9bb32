#pragma once
// File times: counts of 100 nanoseconds since 1601-01-01 UTC.

#include <cstdint>
#include <ctime>

#include "platform/linux/win32_linux.h"

namespace platform::native {

inline constexpr std::int64_t kTicksPerSecond = 10000000;

inline std::int64_t ticksOf(const FILETIME& time) {
  return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

inline FILETIME fileTimeOf(std::int64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// Converts a time since 1970. A time that a file time cannot hold becomes the nearest time that it
// can: times before 1601 its first, and times after the year 30828 its last one.
FILETIME fileTimeOf(std::int64_t seconds, std::int64_t nanoseconds);

// Converts a file time to a time since 1970.
struct timespec timeSpecOf(const FILETIME& time);

}  // namespace platform::native
