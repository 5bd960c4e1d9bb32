#pragma once
// File times as automation dates.

#include "platform/win32.h"

namespace FileSystem::Detail {

// Returns a file time as an automation date in local time, or 0.0 if an automation date cannot hold
// it.
double dateOf(const FILETIME& time);
// The same for a time that was converted to local time.
double dateOfLocal(const FILETIME& local);

}  // namespace FileSystem::Detail
