#pragma once
// The folders that hosts pass to the calls with reasons.

#include <filesystem/results.h>

#include <string>

namespace FileSystem::Detail {

// Returns the folder with one trailing `\`, so that a name can be appended. An empty text is the
// current folder.
std::string folderText(const char* folder);

// Creates a folder that folderText() has returned, and its missing parents, unless it exists. A
// path may be as long as the system permits.
Reason createFolder(const std::string& folder);

}  // namespace FileSystem::Detail
