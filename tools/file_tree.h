#pragma once
// Files and directory trees as the system shows them. The library does not report
// the files that it leaves out.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "output.h"

// Paths of all files below a directory that ends in a backslash, relative to it,
// sorted. Links to directories are followed, except one that is a cycle. A
// directory that cannot be read is a failure; files of other kinds are left
// out with a warning.
std::vector<std::string> filesBelow(const std::string& directory, Output& output);

// Size of a file in bytes; 0 if it cannot be determined.
std::uint64_t fileSize(const std::string& path);

// The write time of a file; nothing if it does not exist.
std::optional<std::filesystem::file_time_type> writeTime(const std::string& path);

// True if both paths exist and are the same file.
bool isSameFile(const std::string& a, const std::string& b);

// Why the library could not read or store a file that exists.
std::string readFailure(const std::string& path);
