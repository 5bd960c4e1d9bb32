#pragma once
/// @file
/// Questions and actions on single files and folders: probes, folder chains,
/// copying, lock files, the sweep of old files, version resources. Paths are
/// zero-terminated texts in the process code page. Results of type `int` are
/// truth values to be tested against zero.

#include <filesystem/access.h>
#include <filesystem/export.h>
#include <filesystem/mfc_text.h>

#include <string>

namespace FileSystem {

/// Whether a file can be opened for reading by somebody who lets others read
/// and write. A file that is held without sharing counts as missing.
/// @param filename path, not null; a bare name is looked up along the
///                 platform's search path too
/// @return non-zero if found (1, or the length of the path found along the
///         search path); 0 otherwise, folders included
FILESYSTEM_API int FileExists(const char* filename);

/// Whether a folder exists. Needs no right to write in it and makes nothing.
/// @param path folder, with or without trailing separator, of at most 246 bytes
/// @return 1 or 0; a file gives 0, and so does a longer path
FILESYSTEM_API int FolderExists(const char* path);

/// Whether somebody holds the file open for writing.
/// @param filename path of a file
/// @return 1 if the file cannot be opened for reading with others kept from
///         writing, for whatever reason, a missing file included; else 0
FILESYSTEM_API int IsFileLockedWrite(const char* filename);

/// Whether the read-only attribute is set.
/// @param filename path of a file or folder
/// @return 1 if it is set or the attributes cannot be read; else 0
FILESYSTEM_API int IsFileReadOnly(const char* filename);

/// Whether a file can be opened or created. A missing file is created, empty,
/// and stays; missing folders are not.
/// @param filename path of a file
/// @param access   mask of #kAccessRead and #kAccessWrite
/// @return 1 or 0
FILESYSTEM_API int TestCreate(const char* filename, unsigned long access);

/// Whether an existing file can be opened.
/// @param filename path of a file
/// @param access   mask of #kAccessRead and #kAccessWrite
/// @return 1 or 0; nothing is created
FILESYSTEM_API int TestOpen(const char* filename, unsigned long access);

/// The access that a file allows at this moment.
/// @param filename path of a file, or null
/// @return #kAccessReadWrite, #kAccessRead or #kAccessNone. A null pointer, a missing file and a
/// file that another
///         handle has open without sharing return #kAccessReadWrite.
FILESYSTEM_API unsigned long AllowedAccess(const char* filename);

/// Last write time of a file, as an OLE automation date (days since
/// 1899-12-30, local time; the fraction is the time of day).
/// @param filename path of an existing file
/// @return the date, or 0.0 if the file is missing, cannot be opened for
///         reading, or has a time that an automation date cannot hold
FILESYSTEM_API double fileTime(const std::string& filename);

/// Makes all missing folders of a chain and tests that the last can be used.
/// @param path folder, with or without trailing separator; its root (drive,
///             share, or first component of a relative path) is not made; at
///             most 259 bytes behind the root are looked at
/// @return the result of IsValidPath on `path`. Folders made before a failure
///         stay.
FILESYSTEM_API int EnsurePathExists(const char* path);

/// Whether a folder can take files, tested by a real write that leaves nothing
/// behind.
/// @param path folder, with or without trailing separator, of at most 246
///             bytes; null counts as empty
/// @return 1 or 0
FILESYSTEM_API int IsValidPath(const char* path);

/// Deletes an empty folder, and then each parent that has become empty, up to the first that is a
/// link or the root of a drive or share.
/// @param path folder, with or without trailing `\`; null counts as empty
/// @return 1 if `path` itself was deleted, whether or not any parent was; else 0
FILESYSTEM_API int DeleteEmptyFolder(const char* path);

/// When CopyFileA copies. "Older" compares the times of the last write.
inline constexpr unsigned int kCopyAlways = 0;
inline constexpr unsigned int kCopyIfMissing = 1;   ///< the target does not exist
inline constexpr unsigned int kCopyIfExisting = 2;  ///< the target exists
inline constexpr unsigned int kCopyIfMissingOrOlder =
    4;  ///< the target does not exist, or is older
inline constexpr unsigned int kCopyIfExistingAndOlder = 6;  ///< the target exists and is older

/// Copies one file into a folder under its own name.
/// @param source       path of the file, not null
/// @param targetFolder folder text that ends in a separator, not null; the name is appended to it
/// @param mode         one of the `kCopy` constants. Any other value with bit 2 set counts as
///                     #kCopyIfExisting, or, with bit 4 set too, as #kCopyIfExistingAndOlder; the
///                     remaining values never copy.
/// @return non-zero if the file was copied; 0 if the mode or a failure kept it
///         from being copied. On Linux an existing target is replaced whole or
///         not at all, unless other handles hold it, it has other hard links, or
///         its folder permits no replacement; it is overwritten in place then,
///         as always on Windows.
FILESYSTEM_API int CopyFileA(const char* source, const char* targetFolder, unsigned int mode);

/// Copies the content of a folder, including its subfolders, into another folder. A file that
/// cannot be copied is not counted and does not end the walk. Unlike EnumFilesWithPath, it includes
/// files with a path of over 259 bytes.
/// @param source folder text that ends in `\`
/// @param target folder text that ends in `\`; created if missing. Existing files are overwritten.
/// @return number of files copied, a 32-bit value; -4 if `target` cannot be created or used
FILESYSTEM_API long CopyContent(const std::string& source, const std::string& target);

/// Puts the marker file `<process id>.lock` into a folder. The lock is the
/// file's presence; no handle is kept.
/// @param folder folder, with or without trailing `\`; null counts as the
///               current folder; text of over 258 bytes is cut
/// @return 1 if the file now exists, else 0
FILESYSTEM_API int CreateLockFile(const char* folder);

/// Removes the calling process's marker file of CreateLockFile.
/// @param folder as for CreateLockFile
/// @return non-zero if the file was deleted, else 0
FILESYSTEM_API int DeleteLockFile(const char* folder);

/// Deletes old files of a tree, and its empty subfolders whatever their age.
///
/// Directly in `folder` only files of the pattern `*.tmp` are candidates, below it all files. Files
/// that FileExists denies and files with a path of over 259 bytes are kept. If `folder` becomes
/// empty because its last subfolder was deleted, it is deleted too, and then each parent that has
/// become empty, up to the first link. Nothing outside the tree is deleted: links are kept and not
/// followed, also if another process replaces a folder with a link during the sweep.
/// @param folder folder text that ends in a separator
/// @param days   age in days from which on a file is old, by its last write
/// @return number of files deleted
FILESYSTEM_API unsigned int eraseOldFile(const std::string& folder, unsigned int days);

/// A string value of a file's version resource, from the first language block
/// of its translation list.
/// @param filename path of an executable or library in the PE format
/// @param key      name of the value, such as `ProductVersion`
/// @param value    filled in on success, else unchanged
/// @return 1 or 0
FILESYSTEM_API int VerGetFileInfoString(const char* filename, const char* key, CString& value);

/// Version text of an executable: its `ProductVersion`, followed by a letter A
/// to Z if its `SpecialBuild` is a number from 1 to 26.
/// @param filename path of an executable or library in the PE format
/// @param version  filled in on success, else unchanged
/// @return 1 or 0
FILESYSTEM_API int FormatVersion(const char* filename, CString& version);

}  // namespace FileSystem
