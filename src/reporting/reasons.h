#pragma once
// Reasons of the system's errors.

#include <filesystem/results.h>

#include "platform/win32.h"

namespace FileSystem::Detail {

// Returns the reason of an error code of Win32, `other` if the code has none.
Reason reasonOfError(DWORD error, Reason other = Reason::Failed);

}  // namespace FileSystem::Detail
