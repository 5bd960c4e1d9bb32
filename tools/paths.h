#pragma once
// Path text of the library and of the system's other programs.

#include <filesystem>
#include <string>

inline bool isSeparator(char c) { return c == '\\' || c == '/'; }

// The path without its trailing separators, except those of a root. The library
// appends a backslash to a trailing `/`, and the two would begin a server's name.
std::string withoutEndSeparators(std::string path);

// The text after the last separator; in a path without one, after the drive.
std::string lastComponent(const std::string& path);

// The directory with one trailing backslash, as most of the library takes it.
std::string withBackslash(const std::string& directory);

// A path whose missing directories the library can create. It takes the first
// component of a relative path for a root that exists, so a relative path gets a
// leading `.\`. Repeated separators become one, because two would begin a
// server's name. Trailing separators are removed.
std::string creatablePath(const std::string& path);

// A path of the library as other programs of this system know it, or unchanged if
// they do not.
std::string nativePath(const std::string& path);

// The same as an object of the standard library, whose own conversion of text does
// not read UTF-8 on every system. Empty if other programs do not know the path.
std::filesystem::path systemPath(const std::string& path);

// A path of this system as the library takes it; the inverse of nativePath.
std::string libraryPath(const std::string& path);
