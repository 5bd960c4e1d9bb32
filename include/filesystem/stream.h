#pragma once
/// @file
/// Whole files as one text of bytes. No newline, byte order mark or encoding is
/// looked at.

#include <filesystem/export.h>

#include <string>

namespace FileSystem {

/// The bytes of a file.
/// @param path path of the file
/// @return the content; empty if the file is empty or cannot be opened. After a
///         read error, the bytes read so far.
FILESYSTEM_API std::string readContent(const std::string& path);

/// Replaces the content of a file, or makes the file.
/// @param path    path of the file; its folder must exist
/// @param content the bytes
/// @return true if the file could be opened and took the data. Of content below
///         2 MiB only the opening is known: it is written when the file closes.
FILESYSTEM_API bool writeContent(const std::string& path, const std::string& content);

}  // namespace FileSystem
