#pragma once
// Symbolic links as such. Everything else in this layer follows them, unless it says otherwise.

#include <string>

#include "platform/win32.h"

namespace platform {

// Reports whether the entry that the search found last is a symbolic link. Always false on Windows,
// where links are followed.
bool isFoundLink(HANDLE search);

// Reads the target of a link, in the bytes of the system. False if the path is that of no link, and
// always on Windows.
bool readLink(const char* path, std::string& target);

}  // namespace platform
