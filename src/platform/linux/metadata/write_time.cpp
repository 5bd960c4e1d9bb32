#include "platform/linux/metadata/write_time.h"

#include <sys/stat.h>

#include <cstdint>

namespace platform::native {
namespace {

constexpr std::int64_t kSecond = 1000000000;
constexpr long kFileTimeUnit = 100;

// The units of times that file systems store, in nanoseconds: UDF has microseconds, exFAT
// hundredths of a second, old ext2 and HFS+ seconds, FAT two seconds.
constexpr std::int64_t kUnits[] = {1000, kSecond / 100, kSecond, 2 * kSecond};

bool setExactly(int descriptor, const struct timespec& time) {
  const struct timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, time};
  return futimens(descriptor, times) == 0;
}

bool readWriteTime(int descriptor, struct timespec& time) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) return false;
  time = status.st_mtim;
  return true;
}

struct timespec laterBy(const struct timespec& time, std::int64_t nanoseconds) {
  const std::int64_t sum = time.tv_nsec + nanoseconds;
  return {.tv_sec = time.tv_sec + sum / kSecond, .tv_nsec = sum % kSecond};
}

// Returns `to` less `from` in nanoseconds, at most that of some seconds.
std::int64_t distance(const struct timespec& from, const struct timespec& to) {
  constexpr std::int64_t kMost = 10;
  const std::int64_t seconds = std::int64_t{to.tv_sec} - from.tv_sec;
  if (seconds > kMost) return kMost * kSecond;
  if (seconds < -kMost) return -kMost * kSecond;
  return seconds * kSecond + to.tv_nsec - from.tv_nsec;
}

}  // namespace

bool setWriteTime(int descriptor, const struct timespec& time, const struct timespec& stored) {
  if (!setExactly(descriptor, time)) return false;
  if (stored.tv_nsec % kFileTimeUnit != 0) return true;
  struct timespec rounded;
  if (!readWriteTime(descriptor, rounded)) return false;
  const std::int64_t lost = distance(rounded, time);
  if (lost < kFileTimeUnit) return true;
  // The unit is larger than what was lost. A smaller one than the true unit changes nothing.
  for (const std::int64_t unit : kUnits) {
    if (unit <= lost) continue;
    struct timespec now;
    if (!setExactly(descriptor, laterBy(rounded, unit)) || !readWriteTime(descriptor, now)) {
      return false;
    }
    if (distance(now, time) < kFileTimeUnit) return true;
  }
  // The file system cannot store so late a time.
  return true;
}

}  // namespace platform::native
