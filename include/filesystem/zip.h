#pragma once
/// @file
/// Packing a whole directory into a zip archive, and unpacking one.
///
/// @code
/// if (FRT_ZIP_FOLDER("C:\\data", "C:\\backup.zip")) FRT_UNZIP_FILE("C:\\backup.zip", "C:\\copy");
/// @endcode

#include <filesystem/export.h>

/// Packs the files of a directory and its subdirectories into a new zip archive.
///
/// Entries are named by their paths below the directory, separated by `\`. Empty directories are
/// not stored. Left out without notice are files that cannot be opened for reading, files whose
/// path has more than 259 bytes, directories that cannot be read, and the archive itself if it lies
/// in the directory. FileSystem::packFolder leaves out nothing without notice.
///
/// An existing archive is replaced when the new one is complete; until then it is locked, and it
/// remains if the process ends or, on Linux, the power fails. If a new file cannot have its owner,
/// its group and its access control list, if it has several hard links, or if its directory accepts
/// no new file, the file is kept, with up to about twice the size. On Linux the archive is on the
/// disk when the call returns.
/// @param folder the directory, with or without trailing separator, not null
/// @param zip    path of the archive, not null
/// @return true if the archive has every file that was not left out. False, and nothing changes, if
///         the archive cannot be created, is in use or cannot be written, as on a full disk. False
///         too if a file cannot be read to its end or has a name of more than 260 bytes: the archive
///         then has the files before it.
FILESYSTEM_API bool FRT_ZIP_FOLDER(const char* folder, const char* zip);

/// Unpacks a zip archive without password into a directory.
///
/// Missing directories are created, existing files and links replaced. The first entry that fails
/// ends the call: one that is damaged or encrypted, is that of a directory, has a name that escapes
/// the target (`..`, a root, a drive) or passes through a symbolic link in it, or whose file cannot
/// be written. Entries unpacked before it remain.
/// @param zip    path of the archive, not null
/// @param folder the target directory, with or without trailing separator, not null
/// @return true if every entry was unpacked, and also if the file is no zip archive; false if an
///         entry failed or the archive cannot be opened
FILESYSTEM_API bool FRT_UNZIP_FILE(const char* zip, const char* folder);
