#pragma once
/// @file
/// Path text: taking paths apart and relating them to each other. Texts are in
/// the process code page; both `\` and `/` separate unless a function says
/// otherwise. Only ParentDirectory looks at the disk.

#include <filesystem/export.h>
#include <filesystem/mfc_text.h>

#include <string>

namespace FileSystem {

/// Drive of a path, such as `C:`.
/// @param path any path; only the text up to its first zero byte counts
/// @return the first two bytes if the second is a colon, white space trimmed;
///         otherwise the empty text
FILESYSTEM_API std::string extractDrive(const std::string& path);

/// Drive and directory of a path, up to and including the last separator.
/// @param path any path; separators come back as they stand
/// @return drive and directory with white space trimmed from both ends; empty
///         if there is neither. A directory of over 255 bytes is cut.
FILESYSTEM_API std::string extractPath(const std::string& path);

/// File name with extension.
/// @param path any path
/// @return what stands behind the last separator, blanks trimmed from the two
///         ends of the extension only; empty for a path that ends in a
///         separator. Name and extension are cut at 255 bytes each.
FILESYSTEM_API std::string extractFilename(const std::string& path);

/// File name without extension.
/// @param path any path
/// @return what stands between the last separator and the last dot behind it,
///         blanks trimmed; cut at 255 bytes
FILESYSTEM_API std::string extractName(const std::string& path);

/// Extension with its leading dot.
/// @param path any path
/// @return the text from the last dot behind the last separator on, blanks
///         trimmed; empty if there is no such dot; cut at 255 bytes
FILESYSTEM_API std::string extractExtension(const std::string& path);

/// A path with its extension replaced, or appended if it has none.
/// @param path      any path
/// @param extension the new extension, with or without its dot; empty removes
///                  the old one
/// @return the new path with blanks trimmed from both ends; cut at 260 bytes
FILESYSTEM_API std::string replaceExtension(const std::string& path, const std::string& extension);

/// Whether two paths are the same text but for letter case.
///
/// Nothing is resolved: `\` and `/` differ, and so do paths with and without a
/// trailing separator.
/// @return true if the texts are equal after lower-casing
FILESYSTEM_API bool pathEqual(const std::string& first, const std::string& second);

/// A path without the folder in front of it.
/// @param base folder text, with its trailing separator; compared as plain
///             text without regard to letter case
/// @param path any path
/// @return what stands behind `base` in `path`, or all of `path` if it does not
///         begin with `base` or holds nothing more
FILESYSTEM_API std::string subPath(const std::string& base, const std::string& path);

/// The folder above a path. Looks at the disk, to tell a file from a folder
/// where the text alone does not.
/// @param path zero-terminated path; null counts as empty; at most 259 bytes
///             are looked at
/// @return the folder, as a rule with a trailing `\`; a root gives itself
FILESYSTEM_API CString ParentDirectory(const char* path);

/// The root of a path: a drive with its separator, a share, or the first
/// component of a relative path.
/// @param path zero-terminated path; null counts as empty; at most 259 bytes
///             are looked at
/// @param root filled in; what it held before is lost
FILESYSTEM_API void PathRoot(const char* path, CString& root);

/// A text without the characters that a file name cannot hold:
/// `\ / : ? " < > |`. They are deleted, not replaced; `*` stays.
/// @param name a file name, not a path, whose separators would go
/// @return the rest of the bytes in their order
FILESYSTEM_API std::string eraseInvalidCharacter(const std::string& name);

}  // namespace FileSystem
