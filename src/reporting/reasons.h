#pragma once
// Reasons of the system's errors.

#include <filesystem/results.h>

#include "platform/win32.h"

namespace FileSystem::Detail {

// Returns the reason that an error code of Win32 stands for, `other` if it names none.
Reason reasonOfError(DWORD error, Reason other = Reason::Failed);

}  // namespace FileSystem::Detail
