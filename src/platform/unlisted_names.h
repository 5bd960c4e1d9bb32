#pragma once
// Names that are too long for the record of a search.

#include <string>
#include <vector>

#include "platform/win32.h"

namespace platform {

// Returns the names, as paths show them, of the entries that the search has passed over so far
// because their records cannot hold them. Only a Linux name of many backslashes is that long.
std::vector<std::string> unlistedNames(HANDLE search);

}  // namespace platform
