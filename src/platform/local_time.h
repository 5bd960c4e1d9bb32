#pragma once
// Local time with the offset of the converted time itself. FileTimeToLocalFileTime uses the present
// offset, so that its result for a time in the other half of the year is an hour off.

#include <optional>

#include "platform/win32.h"

namespace platform {

// All parts are 0 if the time cannot be converted.
SYSTEMTIME localTimeOf(const FILETIME& time);
// Returns nothing if the parts are those of no time.
std::optional<FILETIME> timeOfLocal(const SYSTEMTIME& local);

}  // namespace platform
