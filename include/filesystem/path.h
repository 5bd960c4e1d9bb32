#pragma once
/// @file
/// Path text: splitting paths and comparing them. Texts are in the process code page. Both `\` and
/// `/` separate components unless a function says otherwise. Only ParentDirectory accesses the
/// disk, and no function reports an error.
///
/// @code
/// using namespace FileSystem;
/// extractPath("C:\\logs\\app.old.txt");              // "C:\\logs\\"
/// extractFilename("C:\\logs\\app.old.txt");          // "app.old.txt"
/// extractName("C:\\logs\\app.old.txt");              // "app.old"
/// replaceExtension("C:\\logs\\app.txt", "bak");      // "C:\\logs\\app.bak"
/// subPath("C:\\Logs\\", "c:\\logs\\2024\\app.txt");  // "2024\\app.txt"
/// @endcode

#include <filesystem/export.h>
#include <filesystem/mfc_text.h>

#include <string>

namespace FileSystem {

/// Returns the drive of a path, such as `C:`.
/// @param path any path, up to its first zero byte
/// @return the first two bytes without white space if the second is a colon; otherwise empty
FILESYSTEM_API std::string extractDrive(const std::string& path);

/// Returns the drive and directory of a path, including the last separator.
/// @param path any path, up to its first zero byte; its separators are kept unchanged
/// @return drive and directory without white space at the ends; empty if the path has neither. A
///         directory is cut to 255 bytes.
FILESYSTEM_API std::string extractPath(const std::string& path);

/// Returns the file name with its extension.
/// @param path any path, up to its first zero byte
/// @return the text after the last separator, without spaces at the end of the extension; spaces
///         around the name are kept. Empty for a path that ends in a separator. Name and extension
///         are cut to 255 bytes each.
FILESYSTEM_API std::string extractFilename(const std::string& path);

/// Returns the file name without its extension.
/// @param path any path, up to its first zero byte
/// @return the text between the last separator and the last dot after it, without spaces at the
///         ends; cut to 255 bytes
FILESYSTEM_API std::string extractName(const std::string& path);

/// Returns the extension with its dot.
/// @param path any path, up to its first zero byte
/// @return the text from the last dot after the last separator, without spaces at its end; empty if
///         there is no such dot; cut to 255 bytes
FILESYSTEM_API std::string extractExtension(const std::string& path);

/// Replaces the extension of a path, or appends it if the path has none.
/// @param path      any path, up to its first zero byte
/// @param extension the new extension, with or without its dot; empty to remove the old one
/// @return the new path without spaces at its ends; cut to 260 bytes
FILESYSTEM_API std::string replaceExtension(const std::string& path, const std::string& extension);

/// Compares two paths as text, ignoring case. Zero bytes do not end the texts.
///
/// Nothing is resolved: `\` differs from `/`, and a path with a trailing separator from the same
/// path without one. Accented letters are compared as in Windows-1252, all others by the global
/// locale.
/// @return true if the texts are equal in lower case
FILESYSTEM_API bool pathEqual(const std::string& first, const std::string& second);

/// Returns the part of a path that follows a base directory. Zero bytes do not end the texts.
/// @param base directory with its trailing separator; compared as text, ignoring case
/// @param path any path
/// @return the part of `path` after `base`; all of `path` if it does not begin with `base` or is
///         not longer
FILESYSTEM_API std::string subPath(const std::string& base, const std::string& path);

/// Returns the directory that contains a path. Checks the disk for a file of that name, because the
/// text alone does not distinguish a file from a directory if its separators are `/`.
/// @param path zero-terminated path; null counts as empty; only the first 259 bytes count. One
///             trailing `\` is ignored.
/// @return the text up to the last `\`. A path without `\` is returned with a `\` appended. Empty
///         for an empty path and for the bare name of an existing file.
FILESYSTEM_API CString ParentDirectory(const char* path);

/// Finds the root of a path: a drive with its separator, a server and share, or the first component
/// of a relative path. A pair of separators begins a server name wherever it is in the path.
/// @param path zero-terminated path; null counts as empty; only the first 259 bytes count
/// @param root receives the root, with its trailing separator if the path has one
FILESYSTEM_API void PathRoot(const char* path, CString& root);

/// Removes the characters that a file name cannot hold: `\ / : ? " < > |`. Keeps `*`, control
/// characters, and spaces and dots at the end.
/// @param name a file name; a path would lose its separators
/// @return the remaining bytes in their order, possibly none
FILESYSTEM_API std::string eraseInvalidCharacter(const std::string& name);

}  // namespace FileSystem
