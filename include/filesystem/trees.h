#pragma once
/// @file
/// Listing, copying and deleting trees of files, with reasons and progress, and paths of other programs.
///
/// @code
/// using namespace FileSystem;
/// const std::string source = "C:\\data\\";
/// const Report report = copyTree(source.c_str(), "D:\\backup\\data");
/// for (const ItemResult& item : report.items) {
///   if (item.reason == Reason::None) continue;
///   show(nativePath((source + item.name).c_str()), reasonText(item.reason));
/// }
/// @endcode

#include <filesystem/export.h>
#include <filesystem/options.h>
#include <filesystem/results.h>

#include <string>

namespace FileSystem {

/// Lists the files of a folder and its subfolders that EnumFilesWithPath lists, and names those that
/// it leaves out.
/// @param folder  the folder, with or without trailing separator, not null
/// @param pattern the wildcard that selects files, as FindFirstFile takes it, not null. It does not
///                select folders.
/// @param options progress, which names files without their paths; folders(): whether each subfolder is
///                an item too; links(): whether a symbolic link is an item, and not followed. Other
///                links to folders are followed, unless they form a cycle.
/// @return an item for each file of the pattern, for each folder that cannot be listed, and for what
///         the options ask for, by its path below `folder`. A file with a reason is not listed, such as
///         one that others use, or with a path of over 259 bytes. Report::reason is Reason::Cancelled,
///         or why the folder itself cannot be listed.
FILESYSTEM_API Report listTree(const char* folder, const char* pattern,
                               const Options& options = Options());

/// Copies the content of a folder and its subfolders into another folder, as CopyContent does, and
/// continues after a file that fails. Each file of the target is the old one or complete. A file that
/// cannot be replaced is overwritten in place, to its end also in a call that is cancelled: one that
/// other programs hold open while they share writing, that has several names, or whose folder or
/// owner permits no replacement. A failure can leave a part of the new content in it.
///
/// With a callback the files are counted first, while the callback receives the names of folders.
/// @param source  the folder, with or without trailing separator, not null
/// @param target  the folder, with or without trailing separator, not null; created if missing, with
///                its parents. At most 243 bytes.
/// @param options existing files, progress
/// @return an item for each file, and for each folder that failed, by its path below `source`; the
///         folder itself has an empty name. Report::reason is Reason::Cancelled, or why one of the
///         two folders cannot be used.
FILESYSTEM_API Report copyTree(const char* source, const char* target,
                               const Options& options = Options());

/// Copies a file into a folder, under its own name, as copyTree copies each of its files.
/// @param file    the file, not null. A link is followed.
/// @param folder  the folder, with or without trailing separator, not null; created if missing, with
///                its parents. At most 243 bytes.
/// @param options existing files, progress
/// @return an item for the file, by its name. Without it, Report::reason is Reason::Cancelled, or why
///         the file or the folder cannot be used.
FILESYSTEM_API Report copyFile(const char* file, const char* folder,
                               const Options& options = Options());

/// Deletes the old files of a tree and its empty subfolders, as eraseOldFile does, and continues
/// after a file that fails.
/// @param folder  the folder, with or without trailing separator, not null
/// @param days    a file is old if its last write was at least this many days ago
/// @param options progress
/// @return an item for each file that is old, and for each folder that cannot be listed or removed,
///         by its path below `folder`. Files with a path of over 259 bytes stay.
FILESYSTEM_API Report deleteOldFiles(const char* folder, unsigned int days,
                                     const Options& options = Options());

/// Finds what deleteOldFiles would do, and deletes nothing.
/// @param folder  the folder, with or without trailing separator, not null
/// @param days    a file is old if its last write was at least this many days ago
/// @param options progress
/// @return an item for each file that is old, by its path below `folder`. With Reason::None it would
///         be deleted.
FILESYSTEM_API Report findOldFiles(const char* folder, unsigned int days,
                                   const Options& options = Options());

/// Deletes a folder with all that it has, and continues after a file that fails. Links are deleted,
/// never followed, also if another process replaces a folder with a link. Files that are read-only,
/// or open without delete sharing, stay with their folders. The root of a drive or share is refused
/// with Reason::NoPermission.
/// @param folder  the folder, with or without trailing separator, not null. Of a link to a folder
///                only the link is deleted.
/// @param options progress
/// @return an item for each file, and for each folder that failed although nothing is left in it, by
///         its path below `folder`; the folder itself has an empty name
FILESYSTEM_API Report deleteTree(const char* folder, const Options& options = Options());

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
