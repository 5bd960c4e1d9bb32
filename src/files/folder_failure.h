#pragma once
// Why a folder cannot be used.

#include <filesystem/results.h>

#include <string>

#include "platform/win32.h"

namespace FileSystem::Detail {

// Returns the reason for the error that a use of the folder had.
Reason folderFailure(const std::string& path, DWORD error);

}  // namespace FileSystem::Detail
