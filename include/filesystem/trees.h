#pragma once
/// @file
/// Paths of other programs.
///
/// @code
/// std::ifstream file(FileSystem::nativePath("C:\\data\\notes.txt"));
/// @endcode

#include <filesystem/export.h>

#include <string>

namespace FileSystem {

/// Returns a path of the library as other programs of the system know it. On Linux drives and
/// shares are mapped (DefineDosDeviceA), separators become `/`, `.` and `..` are resolved in the
/// text as this library does, and U+F05C, which represents a backslash in a name, becomes a
/// backslash. A relative path remains one, and a separator at its end remains. On Windows it is
/// unchanged. A name below a folder, as the items of a Report have it, is converted together with
/// the path of the folder: alone it may have the form of a drive.
/// @param path path of the library, not null
/// @return the path; empty if the path has no place in the system, as on an unmapped drive
FILESYSTEM_API std::string nativePath(const char* path);

/// Returns the path of the library for a path of another program; the inverse of nativePath. On
/// Linux a `..` in the path is for this library that of the text: a path with a `..` after a link
/// has to be made canonical before.
/// @param path path of the system, not null
/// @return the path; empty if the library cannot name it, since a name in it has U+F05C
FILESYSTEM_API std::string libraryPath(const char* path);

}  // namespace FileSystem
