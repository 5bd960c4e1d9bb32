#pragma once
// What copying a file and copying a tree have in common.

#include <filesystem/results.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/win32.h"

namespace FileSystem::Detail {

// Returns a folder path that EnsurePathExists creates with all its parents. It takes the first
// component of a relative path for a root that exists.
std::string creatable(std::string_view path);

// Creates a folder with its parents and tests that it can be written to. Adds the paths of the
// folders that it has created.
Reason prepareTarget(const std::string& path, std::vector<std::string>& created);

// Returns the reason for the error of a copy.
Reason copyFailure(const char* source, const char* target, bool isRegular, DWORD error);

}  // namespace FileSystem::Detail
