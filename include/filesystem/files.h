#pragma once
/// @file
/// Operations on single files and folders: probes, folder chains, copying, lock files, the deletion
/// of old files, and version resources.
///
/// @code
/// using namespace FileSystem;
/// if (EnsurePathExists("C:\\backup\\today") != 0) {
///   CopyFileA("C:\\data\\orders.xml", "C:\\backup\\today\\", kCopyIfMissingOrOlder);
///   long copied = CopyContent("C:\\data\\", "C:\\backup\\today\\");
/// }
/// eraseOldFile("C:\\cache\\", 30);
/// @endcode
///
/// Paths are zero-terminated texts in the process code page; one in a `std::string` ends at its
/// first zero byte, too. A result of type `int` is a truth value: zero means no or failure, any
/// other value yes. No function throws an exception of its own.

#include <filesystem/access.h>
#include <filesystem/export.h>
#include <filesystem/mfc_text.h>

#include <string>
#include <vector>

namespace FileSystem {

/// Reports whether a file can be opened for reading while others read and write it. A file that
/// another handle has open without read sharing is reported as missing.
/// @param filename path, not null. A bare name, without drive and folder, is also searched for
///                 along the platform's search path.
/// @return non-zero if the file can be opened (1) or a bare name is found along the search path
///         (the length of the path found); else 0. A folder returns 0, unless its bare name is
///         found along the search path, where folders count, too.
FILESYSTEM_API int FileExists(const char* filename);

/// Reports whether a folder exists. Needs no permission to write in it and creates nothing.
/// @param path folder, with or without trailing separator, of at most 246 bytes
/// @return 1 or 0. A file, a null pointer and a longer path return 0.
FILESYSTEM_API int FolderExists(const char* path);

/// Reports whether another handle has a file open for writing.
/// @param filename path of a file
/// @return 1 if the file cannot be opened for reading with writers excluded, for whatever reason,
///         including a missing file; else 0
FILESYSTEM_API int IsFileLockedWrite(const char* filename);

/// Reports whether a file or folder is read-only.
/// @param filename path of a file or folder
/// @return 1 if the read-only attribute is set or the attributes cannot be read; else 0
FILESYSTEM_API int IsFileReadOnly(const char* filename);

/// Opens a file, or creates it, and closes it again. A new file is empty and stays on disk; missing
/// folders are not created.
/// @param filename path of a file
/// @param access   mask of #kAccessRead and #kAccessWrite
/// @return 1 if the file could be opened or created with this access; else 0
FILESYSTEM_API int TestCreate(const char* filename, unsigned long access);

/// Reports whether an existing file can be opened. Creates nothing.
/// @param filename path of a file
/// @param access   mask of #kAccessRead and #kAccessWrite
/// @return 1 if the file could be opened with this access; else 0
FILESYSTEM_API int TestOpen(const char* filename, unsigned long access);

/// Returns the access that a file allows now.
/// @param filename path of a file, or null
/// @return #kAccessReadWrite, #kAccessRead or #kAccessNone. For a null pointer, a missing file and
///         a file that another handle has open without sharing it is #kAccessReadWrite.
FILESYSTEM_API unsigned long AllowedAccess(const char* filename);

/// Returns the time of a file's last write as an OLE automation date: days since 1899-12-30 in
/// local time, with the time of day as the fraction.
/// @param filename path of an existing file
/// @return the date, or 0.0 if FileExists denies the file or an automation date cannot hold its
///         time
FILESYSTEM_API double fileTime(const std::string& filename);

/// Creates all missing folders of a path, and tests with IsValidPath that the last one can be used.
/// @param path folder, with or without trailing separator. Its root (drive, share, or the first
///             component of a relative path) is not created, and the text after the root is cut at
///             259 bytes. White space at the end of a component is dropped.
/// @return the result of IsValidPath on `path`. Folders created before a failure stay.
FILESYSTEM_API int EnsurePathExists(const char* path);

/// Reports whether a folder can take files, by writing a temporary file and deleting it again.
/// @param path folder, with or without trailing separator, of at most 246 bytes; null counts as
///             empty
/// @return 1 or 0
FILESYSTEM_API int IsValidPath(const char* path);

/// Deletes an empty folder, and then each parent that has become empty, up to the first that is a
/// link or the root of a drive or share.
/// @param path folder, with or without trailing `\`; null counts as empty
/// @return 1 if `path` itself was deleted, whether or not any parent was; else 0
FILESYSTEM_API int DeleteEmptyFolder(const char* path);

/// @name Modes of CopyFileA
/// "Older" compares the times of the last write.
/// @{
inline constexpr unsigned int kCopyAlways = 0;              ///< in any case
inline constexpr unsigned int kCopyIfMissing = 1;           ///< if the target does not exist
inline constexpr unsigned int kCopyIfExisting = 2;          ///< if the target exists
inline constexpr unsigned int kCopyIfMissingOrOlder = 4;    ///< if it does not exist or is older
inline constexpr unsigned int kCopyIfExistingAndOlder = 6;  ///< if it exists and is older
/// @}

/// Copies a file into a folder under its own name, with its time of the last write.
/// @param source       path of the file, not null
/// @param targetFolder folder text that ends in a separator, not null. The name is appended to it,
///                     without spaces at its ends, and the text is cut at 260 bytes.
/// @param mode         one of the `kCopy` constants. Any other value with bit 2 set counts as
///                     #kCopyIfExisting, or, with bit 4 set too, as #kCopyIfExistingAndOlder; the
///                     remaining values never copy.
/// @return non-zero if the file was copied; 0 if the mode does not apply or the copy failed. On
///         Linux, a failed copy leaves an existing target unchanged, and a power failure leaves the
///         old or the new file, unless other handles hold it, it has other hard links, or its
///         folder does not permit a replacement: then, as always on Windows, it is overwritten in
///         place.
FILESYSTEM_API int CopyFileA(const char* source, const char* targetFolder, unsigned int mode);

/// Copies the content of a folder, including its subfolders, into another folder. Existing files
/// are overwritten. A file that cannot be copied is not counted and does not end the walk. Unlike
/// EnumFilesWithPath, it includes files with a path of over 259 bytes, up to the limit of the
/// system: 4,095 bytes on Linux, 259 on Windows. Folders below the target get their exact names. On
/// Linux, of two files whose names are one in the target only the first is copied.
/// @param source folder text that ends in `\`
/// @param target folder text that ends in `\`; created if missing
/// @return number of files copied, a 32-bit value; -4 if `target` cannot be created or used, or has
///         more than 246 bytes
FILESYSTEM_API long CopyContent(const std::string& source, const std::string& target);

/// Creates the marker file `<process id>.lock` in a folder, unless it exists. The lock is the
/// existence of the file; no handle is kept.
/// @param folder folder, with or without trailing `\`; null counts as the current folder. The text
///               is cut at 259 bytes.
/// @return 1 if the file exists now; else 0
FILESYSTEM_API int CreateLockFile(const char* folder);

/// Deletes the marker file that CreateLockFile creates for this process.
/// @param folder as for CreateLockFile
/// @return non-zero if the file was deleted; else 0
FILESYSTEM_API int DeleteLockFile(const char* folder);

/// Deletes the old files of a tree, and its empty subfolders whatever their age.
///
/// Directly in `folder` only files of the pattern `*.tmp` are candidates, below it all files. Files
/// that FileExists denies and files with a path of over 259 bytes are kept. If `folder` becomes
/// empty because its last subfolder was deleted, it is deleted too, and then each parent that has
/// become empty, up to the first link. Nothing outside the tree is deleted: links are kept and not
/// followed, also if another process replaces a folder with a link during the sweep.
/// @param folder folder text that ends in a separator; an empty text names no folder
/// @param days   a file is old if its last write was at least this many days ago
/// @return number of files deleted
FILESYSTEM_API unsigned int eraseOldFile(const std::string& folder, unsigned int days);

/// Reads a string value of a file's version resource, from the first language block of its
/// translation list.
/// @param filename path of an executable or library in the PE format, for 32 or 64 bits
/// @param key      name of the value, such as `ProductVersion`
/// @param value    set to the value, or unchanged on failure
/// @return 1 or 0
FILESYSTEM_API int VerGetFileInfoString(const char* filename, const char* key, CString& value);

/// Reads the version text of an executable: its `ProductVersion`, followed by a letter from A to Z
/// if its `SpecialBuild` is a number from 1 to 26.
/// @param filename path of an executable or library in the PE format, for 32 or 64 bits
/// @param version  set to the text, or unchanged on failure
/// @return 1 or 0
FILESYSTEM_API int FormatVersion(const char* filename, CString& version);

}  // namespace FileSystem
