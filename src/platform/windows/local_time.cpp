#include "platform/local_time.h"

namespace platform {

SYSTEMTIME localTimeOf(const FILETIME& time) {
  SYSTEMTIME utc;
  SYSTEMTIME local;
  const bool isConverted = FileTimeToSystemTime(&time, &utc) != FALSE &&
                           SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) != FALSE;
  return isConverted ? local : SYSTEMTIME{};
}

std::optional<FILETIME> timeOfLocal(const SYSTEMTIME& local) {
  SYSTEMTIME utc;
  FILETIME time;
  const bool isConverted = TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) != FALSE &&
                           SystemTimeToFileTime(&utc, &time) != FALSE;
  return isConverted ? std::optional(time) : std::nullopt;
}

}  // namespace platform
