#pragma once
// Entry names as paths below a target directory.

#include <cstddef>
#include <string_view>

namespace zip {

// True if a file of that name could lie outside the directory that the name is appended to: the
// name is empty or absolute, starts with a drive, or has a component "..".
bool escapesTarget(std::string_view name);

// True if a file of that name, below an open directory, could lie outside it, or would be none of
// that name. Unlike escapesTarget() it permits names such as `a:b` where these are like any other.
bool escapesFolder(std::string_view name);

// Returns the length of the directory part of a path: up to and with the last separator, or a
// drive, or 0.
std::size_t directoryLength(std::string_view path);

}  // namespace zip
