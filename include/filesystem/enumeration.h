#pragma once
/// @file
/// Listing of files and folders.
///
/// @code
/// std::vector<std::string> logs;
/// FileSystem::EnumFilesWithPath(logs, "C:\\data", "*.log", true);
/// for (const std::string& log : logs) std::puts(log.c_str());
/// @endcode
///
/// Every function appends to the container that it is given and returns the number of entries that
/// it added. The order is that of the platform's search; nothing is sorted. A folder that is
/// missing or cannot be read adds nothing. Links to folders are followed, except those that form a
/// cycle: a link to a folder that contains it is left out.
///
/// In a pattern, `*` matches any text and `?` any character; `*` and `*.*` match every name, and
/// `*.` those without an extension. Letter case is ignored.

#include <filesystem/export.h>
#include <filesystem/file_information.h>
#include <filesystem/mfc_text.h>

#include <boost/function.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace FileSystem {

/// Lists groups of files that differ only in their extension: the base name of each file for which
/// every extension exists. A file that FileExists denies does not exist here.
/// @param result    receives the base names, without folder and extension
/// @param folder    folder text that ends in a separator
/// @param mask      pattern of the base name
/// @param extension first extension, with its dot
/// @param ...       further extensions, `const char*`; the last argument is a null pointer of that
///                  type, which is required
/// @return number of names added
FILESYSTEM_API std::uint64_t EnumFiles(std::vector<std::string>& result, const char* folder,
                                       const char* mask, const char* extension, ...);

/// Lists the names of the files of a folder, with extension and without folder.
/// @param result  receives the names
/// @param folder  folder text that ends in a separator
/// @param pattern pattern of the names
/// @return number of names added
FILESYSTEM_API std::uint64_t EnumFiles(std::vector<std::string>& result, const char* folder,
                                       const char* pattern);

/// Does the same as the overload with extensions for a vector, for an MFC array.
FILESYSTEM_API std::uint64_t EnumFiles(CStringArray& result, const char* folder, const char* mask,
                                       const char* extension, ...);

/// Lists the files of a folder that can be opened for reading, as records.
/// @param result  receives the records; `cFileName` is the name without folder
/// @param folder  folder, with or without trailing `\`, not null
/// @param pattern pattern of the names, not null
/// @return number of records added. A path of over 259 bytes is cut; its file is left out unless
///         another file has the cut path.
FILESYSTEM_API std::uint64_t EnumFilesWithPath(std::vector<FILE_INFORMATION>& result,
                                               const char* folder, const char* pattern);

/// Lists the files of a folder or of a tree that can be opened for reading, as full paths: first
/// those of the folder, then those of each subfolder, parents before children.
/// @param result    receives the paths, each beginning with `folder` as given
/// @param folder    folder, with or without trailing `\`, not null
/// @param pattern   pattern of the names of files, not null; it does not restrict the subfolders
/// @param recursive whether to list subfolders
/// @return number of paths added. A path of over 259 bytes is cut; its file is left out unless
///         another file has the cut path.
FILESYSTEM_API std::uint64_t EnumFilesWithPath(std::vector<std::string>& result, const char* folder,
                                               const char* pattern, bool recursive);

/// Does the same as the record form of EnumFilesWithPath, for the files that a filter accepts.
/// @param result  receives the records; `cFileName` is the name without folder
/// @param folder  folder, with or without trailing `\`, not null
/// @param pattern pattern of the names, not null
/// @param filter  called with the full path of each file that can be opened; returns non-zero to
///                list the file. Its exceptions pass through; an empty filter throws
///                `boost::bad_function_call` at the first file. Records added before stay.
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFilesWithPathEx(std::vector<FILE_INFORMATION>& result,
                                                 const char* folder, const char* pattern,
                                                 const boost::function1<int, const char*>& filter);

/// Lists the folders below a folder as records, depth first, parents before children.
/// @param result    receives the records; `cFileName` is the path relative to `folder`, cut at 259
///                  bytes
/// @param folder    folder text that ends in a separator, not null
/// @param recursive non-zero for the whole tree, zero for direct children
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFolders(std::vector<FILE_INFORMATION>& result, const char* folder,
                                         int recursive);

/// Lists the folders below a folder as full paths that end in `\`, depth first, parents before
/// children.
/// @param result    receives the paths, each beginning with `folder` as given
/// @param folder    folder, with or without trailing `\`, not null
/// @param recursive non-zero for the whole tree, zero for direct children
/// @return number of paths added
FILESYSTEM_API std::uint64_t EnumFolders(std::vector<std::string>& result, const char* folder,
                                         int recursive);

/// Does the same as the record form of EnumFolders, for the folders that a filter accepts.
/// @param result    receives the records; `cFileName` is the path relative to `folder`, cut at 259
///                  bytes
/// @param folder    folder text that ends in a separator, not null
/// @param filter    called with the path of each folder, without trailing `\`; returns zero to
///                  leave out the folder and all below it. Its exceptions pass through; an empty
///                  filter throws `boost::bad_function_call` at the first folder. Then the records
///                  of the subtrees that were complete stay.
/// @param recursive non-zero for the whole tree, zero for direct children
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFoldersEx(std::vector<FILE_INFORMATION>& result,
                                           const char* folder,
                                           const boost::function1<int, const char*>& filter,
                                           int recursive);

}  // namespace FileSystem
