// Clocks and the kinds of time: file times (100 ns since 1601), their parts, and
// automation dates (days since 1899-12-30).

#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>

#include "platform/linux/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int64_t kTicksPerSecond = 10000000;
constexpr std::int64_t kTicksPerMillisecond = 10000;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr sys_days kFileTimeStart = std::chrono::year{1601} / 1 / 1;
constexpr sys_days kDateStart = std::chrono::year{1899} / 12 / 30;

// Dates of the years 100 to 9999.
constexpr double kFirstDate = -657434.0;
constexpr double kBehindLastDate = 2958466.0;

std::int64_t ticksOf(const FILETIME& time) {
  return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

FILETIME fileTimeOf(std::int64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::int64_t ticksNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t offset = (sys_days{} - kFileTimeStart).count() * kSecondsPerDay;
  return (now.tv_sec + offset) * kTicksPerSecond + now.tv_nsec / 100;
}

// Seconds that the local time is ahead of UTC now.
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

}  // namespace
}  // namespace platform::native

using namespace platform::native;

void GetSystemTime(SYSTEMTIME* time) {
  const FILETIME now = platform::native::fileTimeOf(ticksNow());
  FileTimeToSystemTime(&now, time);
}

void GetLocalTime(SYSTEMTIME* time) {
  const FILETIME now = platform::native::fileTimeOf(ticksNow() + localOffset() * kTicksPerSecond);
  FileTimeToSystemTime(&now, time);
}

// By the offset of the present moment, whatever the season of the time is.
BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local) {
  const std::int64_t ticks = ticksOf(*utc);
  if (ticks < 0) return fail(ERROR_INVALID_PARAMETER);
  *local = platform::native::fileTimeOf(ticks + localOffset() * kTicksPerSecond);
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

// Milliseconds are left out.
int SystemTimeToVariantTime(SYSTEMTIME* parts, double* date) {
  const std::chrono::year_month_day day{std::chrono::year{parts->wYear},
                                        std::chrono::month{parts->wMonth},
                                        std::chrono::day{parts->wDay}};
  constexpr WORD kFirstYear = 100;
  constexpr WORD kLastYear = 9999;
  if (!day.ok() || parts->wYear < kFirstYear || parts->wYear > kLastYear || parts->wHour > 23 ||
      parts->wMinute > 59 || parts->wSecond > 59) {
    return FALSE;
  }
  const double whole = static_cast<double>((sys_days(day) - kDateStart).count());
  const int seconds = parts->wHour * 3600 + parts->wMinute * 60 + parts->wSecond;
  const double fraction = seconds / static_cast<double>(kSecondsPerDay);
  // The fraction is the time of day in front of the start, too.
  *date = whole < 0 ? whole - fraction : whole + fraction;
  return TRUE;
}

int VariantTimeToSystemTime(double date, SYSTEMTIME* parts) {
  if (!(date > kFirstDate - 1 && date < kBehindLastDate)) return FALSE;
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
