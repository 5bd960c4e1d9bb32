#pragma once
/// @file
/// Packing a whole directory into a zip archive, and unpacking one.
///
/// @code
/// if (FRT_ZIP_FOLDER("C:\\data", "C:\\backup.zip")) FRT_UNZIP_FILE("C:\\backup.zip", "C:\\copy");
/// @endcode

#include <filesystem/export.h>
#include <filesystem/zip_archive.h>

#include <string>
#include <vector>

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
///         too if a file cannot be read to its end, is too large, or has a name of more than 260
///         bytes: the archive then has the files before it.
FILESYSTEM_API bool FRT_ZIP_FOLDER(const char* folder, const char* zip);

namespace FileSystem {

/// How packFolder encrypts.
struct PackOptions {
  std::string password;  ///< of all entries; empty for none
  ZipArchive::Encryption encryption = ZipArchive::Encryption::Traditional;  ///< with a password
};

/// What packFolder did not pack.
struct PackReport {
  /// Why a file was not packed.
  enum class Reason {
    NotAFile,     ///< left out: neither a file nor a directory, or a link to nothing
    Unreadable,   ///< a file or directory that cannot be opened or read to its end
    TooLarge,     ///< a file of 4 GiB - 1 bytes or more
    NameTooLong,  ///< the name of the entry would have more than 260 bytes
    PathTooLong,  ///< the path has more than 259 bytes
    NotWritten,   ///< the archive cannot be created or written, or not with that encryption
  };
  /// One that was not packed.
  struct File {
    std::string path;  ///< begins with the folder as given; that of the archive with NotWritten
    Reason reason;     ///< why
  };
  std::vector<File> files;  ///< in the order in which they were found
};

/// Packs all files of a directory and its subdirectories into a new zip archive, or changes
/// nothing.
///
/// Entries are named by their paths below the directory. They are stored with `/`, so that every
/// program unpacks the tree; ZipArchive shows and finds them with `\`. Empty directories are not
/// stored, nor is the archive itself if it lies in the directory.
///
/// All files are checked before the first one is packed. An existing archive is replaced and kept
/// as FRT_ZIP_FOLDER does, but it also remains if a file fails.
/// @param folder  the directory, with or without trailing separator, not null
/// @param zip     path of the archive, not null
/// @param options the encryption
/// @param report  what was not packed is appended: with all of Reason::NotAFile, every file that
///                the check rules out, or else the first one that fails
/// @return true if the archive has every file; false, and nothing changes, if one fails or the
///         archive cannot be written
FILESYSTEM_API bool packFolder(const char* folder, const char* zip, const PackOptions& options,
                               PackReport& report);

}  // namespace FileSystem

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
