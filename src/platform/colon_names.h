#pragma once
// Colons in paths below a directory.

#include <string_view>

namespace platform {

// Reports whether a path that is to be below a directory could be that of a drive or of a stream of
// a file. On Linux a colon is a character like any other, except in a path that begins with such as
// `C:\`.
bool isDriveOrStream(std::string_view path);

}  // namespace platform
