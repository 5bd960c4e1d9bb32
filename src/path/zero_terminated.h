#pragma once
// Paths and names that hosts pass as std::string.

#include <string>
#include <string_view>

namespace FileSystem::Detail {

// Returns a text up to its first zero byte, where it ends for every function that takes a
// `const char*`. Hosts pass whole buffers, as in `std::string(buffer, 260)`. Every export that
// joins a path or name to another text, or keeps it, takes it through this function: what follows a
// zero byte would hide what is joined to it, so that the path of an entry would name its folder.
inline std::string_view upToZero(const std::string& text) { return text.c_str(); }

}  // namespace FileSystem::Detail
