#pragma once
/// @file
/// Whole folders in one call: packing into a zip archive and unpacking.

#include <filesystem/export.h>

/// Packs all files of a folder and its subfolders into a new zip archive.
///
/// Entries are named by the path below the folder, with `\` between folders;
/// empty folders are not stored. A file that cannot be opened for reading is
/// left out. An archive that lies in the folder itself is not packed into
/// itself.
/// @param folder folder, with or without trailing `\`, not null
/// @param zip    path of the archive, not null; an existing file is replaced
/// @return true if every file went in. After a failure the archive holds the
///         files before it.
FILESYSTEM_API bool FRT_ZIP_FOLDER(const char* folder, const char* zip);

/// Unpacks a zip archive without password into a folder.
///
/// Missing folders are created, existing files and links replaced. The first
/// entry that fails ends the call: one that is damaged, is encrypted, is a
/// folder, or has a name that escapes the folder (`..`, a root, a drive) or
/// passes through a symbolic link in it.
/// @param zip    path of the archive, not null
/// @param folder folder, with or without trailing separator, not null
/// @return true if every entry came out; also for a file that is no zip archive
FILESYSTEM_API bool FRT_UNZIP_FILE(const char* zip, const char* folder);
