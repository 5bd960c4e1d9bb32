// Clocks, and conversions between file times (100 ns since 1601), their parts, and automation dates
// (days since 1899-12-30).

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>

#include "platform/linux/metadata/file_time.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int64_t kTicksPerMillisecond = 10000;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr sys_days kFileTimeStart = std::chrono::year{1601} / 1 / 1;
constexpr sys_days kDateStart = std::chrono::year{1899} / 12 / 30;

// Dates of the years 100 to 9999.
constexpr double kFirstDate = -657434.0;
constexpr double kAfterLastDate = 2958466.0;

FILETIME timeNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return fileTimeOf(now.tv_sec, now.tv_nsec);
}

// Returns the seconds by which local time is ahead of UTC now.
std::int64_t localOffset() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  tzset();
  return localtime_r(&now, &parts) != nullptr ? parts.tm_gmtoff : 0;
}

void setDay(SYSTEMTIME& parts, sys_days day) {
  const std::chrono::year_month_day date(day);
  parts.wYear = static_cast<WORD>(static_cast<int>(date.year()));
  parts.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  parts.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  parts.wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
}

void setSeconds(SYSTEMTIME& parts, std::int64_t secondsOfDay) {
  parts.wHour = static_cast<WORD>(secondsOfDay / 3600);
  parts.wMinute = static_cast<WORD>(secondsOfDay / 60 % 60);
  parts.wSecond = static_cast<WORD>(secondsOfDay % 60);
}

// Returns the day that a SYSTEMTIME names, or nothing if it names none. As published for
// SystemTimeToVariantTime, a day that its month does not have counts on into the next month, day 0
// is the last day of the previous month, and years of two digits are those from 1930 to 2029.
std::optional<sys_days> dayOf(const SYSTEMTIME& parts) {
  constexpr WORD kLastYear = 9999;
  constexpr int kCenturySplit = 30;
  if (parts.wYear > kLastYear || parts.wMonth < 1 || parts.wMonth > 12 || parts.wDay > 31) {
    return std::nullopt;
  }
  int year = parts.wYear;
  if (year < 100) year += year < kCenturySplit ? 2000 : 1900;
  const std::chrono::year_month month = std::chrono::year{year} / std::chrono::month{parts.wMonth};
  return sys_days(month / 1) + days(int{parts.wDay} - 1);
}

}  // namespace

FILETIME fileTimeOf(std::int64_t seconds, std::int64_t nanoseconds) {
  const std::int64_t offset = (sys_days{} - kFileTimeStart).count() * kSecondsPerDay;
  std::int64_t ticks = 0;
  if (__builtin_add_overflow(seconds, offset, &ticks) ||
      __builtin_mul_overflow(ticks, kTicksPerSecond, &ticks) ||
      __builtin_add_overflow(ticks, nanoseconds / 100, &ticks)) {
    ticks = seconds < 0 ? 0 : std::numeric_limits<std::int64_t>::max();
  }
  return fileTimeOf(std::max<std::int64_t>(ticks, 0));
}

struct timespec timeSpecOf(const FILETIME& time) {
  const std::int64_t ticks = ticksOf(time);
  const std::int64_t offset = (sys_days{} - kFileTimeStart).count() * kSecondsPerDay;
  return {.tv_sec = ticks / kTicksPerSecond - offset, .tv_nsec = ticks % kTicksPerSecond * 100};
}

}  // namespace platform::native

using namespace platform::native;

void GetSystemTime(SYSTEMTIME* time) {
  const FILETIME now = timeNow();
  FileTimeToSystemTime(&now, time);
}

void GetLocalTime(SYSTEMTIME* time) {
  const FILETIME now = timeNow();
  FILETIME local{};
  FileTimeToLocalFileTime(&now, &local);
  FileTimeToSystemTime(&local, time);
}

// Uses the offset of the current time, whatever the season of the converted one.
BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local) {
  std::int64_t ticks = ticksOf(*utc);
  if (ticks < 0 || __builtin_add_overflow(ticks, localOffset() * kTicksPerSecond, &ticks)) {
    return fail(ERROR_INVALID_PARAMETER);
  }
  *local = platform::native::fileTimeOf(ticks);
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* parts) {
  const std::int64_t ticks = ticksOf(*time);
  if (ticks < 0) return fail(ERROR_INVALID_PARAMETER);
  const std::int64_t seconds = ticks / kTicksPerSecond;
  setDay(*parts, kFileTimeStart + days(seconds / kSecondsPerDay));
  setSeconds(*parts, seconds % kSecondsPerDay);
  parts->wMilliseconds = static_cast<WORD>(ticks / kTicksPerMillisecond % 1000);
  return TRUE;
}

// Ignores milliseconds.
int SystemTimeToVariantTime(SYSTEMTIME* parts, double* date) {
  const std::optional<sys_days> day = dayOf(*parts);
  if (!day || parts->wHour > 23 || parts->wMinute > 59 || parts->wSecond > 59) return FALSE;
  const double whole = static_cast<double>((*day - kDateStart).count());
  if (whole < kFirstDate) return FALSE;
  const int seconds = parts->wHour * 3600 + parts->wMinute * 60 + parts->wSecond;
  const double fraction = seconds / static_cast<double>(kSecondsPerDay);
  // Before the start, too, the fraction is the time of day.
  *date = whole < 0 ? whole - fraction : whole + fraction;
  return TRUE;
}

int VariantTimeToSystemTime(double date, SYSTEMTIME* parts) {
  if (!(date > kFirstDate - 1 && date < kAfterLastDate)) return FALSE;
  const double whole = std::trunc(date);
  auto day = kDateStart + days(static_cast<int>(whole));
  auto seconds = static_cast<std::int64_t>(std::llround(std::abs(date - whole) * kSecondsPerDay));
  if (seconds == kSecondsPerDay) {
    day += days(1);
    seconds = 0;
  }
  setDay(*parts, day);
  setSeconds(*parts, seconds);
  parts->wMilliseconds = 0;
  return TRUE;
}
