#include "platform/local_time.h"

#include <chrono>
#include <ctime>

#include "platform/linux/metadata/file_time.h"

namespace platform {
namespace {

// Unlike mktime it needs no system call.
std::time_t offsetAt(std::time_t time) {
  std::tm parts{};
  return localtime_r(&time, &parts) != nullptr ? parts.tm_gmtoff : 0;
}

}  // namespace

SYSTEMTIME localTimeOf(const FILETIME& time) {
  const std::time_t seconds = native::timeSpecOf(time).tv_sec;
  std::tm parts{};
  if (localtime_r(&seconds, &parts) == nullptr) return {};
  return {.wYear = static_cast<WORD>(parts.tm_year + 1900),
          .wMonth = static_cast<WORD>(parts.tm_mon + 1),
          .wDayOfWeek = static_cast<WORD>(parts.tm_wday),
          .wDay = static_cast<WORD>(parts.tm_mday),
          .wHour = static_cast<WORD>(parts.tm_hour),
          .wMinute = static_cast<WORD>(parts.tm_min),
          .wSecond = static_cast<WORD>(parts.tm_sec),
          .wMilliseconds = 0};
}

std::optional<FILETIME> timeOfLocal(const SYSTEMTIME& local) {
  if (local.wMonth < 1 || local.wMonth > 12 || local.wDay < 1 || local.wDay > 31) {
    return std::nullopt;
  }
  using namespace std::chrono;
  const sys_days day = year{local.wYear} / month{local.wMonth} / 1;
  const sys_seconds time = day + days(local.wDay - 1) + hours(local.wHour) +
                           minutes(local.wMinute) + seconds(local.wSecond);
  const std::time_t asUtc = time.time_since_epoch() / seconds(1);
  // The offset of a time that is at most some hours off, and then that of the time itself.
  const std::time_t near = asUtc - offsetAt(asUtc);
  return native::fileTimeOf(asUtc - offsetAt(near), 0);
}

}  // namespace platform
