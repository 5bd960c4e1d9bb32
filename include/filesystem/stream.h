#pragma once
/// @file
/// Whole files as texts of bytes, without newline translation, byte order marks or encodings.
///
/// @code
/// std::string text = FileSystem::readContent("C:\\notes.txt");
/// if (!FileSystem::writeContent("C:\\notes.txt", text + "one more line\n")) { ... }
/// @endcode

#include <filesystem/export.h>

#include <string>

namespace FileSystem {

/// Reads a file.
/// @param path path of the file, up to its first zero byte
/// @return its content; empty if the file is empty or cannot be opened. After a read error, the
///         bytes before the error.
FILESYSTEM_API std::string readContent(const std::string& path);

/// Replaces the content of a file in place, or creates the file. The old content is lost before the
/// new one is written, and a process that is killed between the two leaves an incomplete file.
/// @param path    path of the file, up to its first zero byte; its directory must exist
/// @param content the new content, zero bytes included
/// @return false if the file cannot be opened, or if content of 2 MiB or more cannot be written.
///         Smaller content is written when the file closes, and a failure of that write, such as a
///         full disk, is not reported.
FILESYSTEM_API bool writeContent(const std::string& path, const std::string& content);

}  // namespace FileSystem
