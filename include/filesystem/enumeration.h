#pragma once
/// @file
/// Listing of files and folders. Every function appends to the container that
/// it is given, never clears it, and returns the number of entries that the
/// call added. The order is that of the platform's search; nothing is sorted. A
/// folder that is missing or cannot be listed adds nothing. Links to folders are
/// followed, but for one that leads back to a folder that the walk is in: it is
/// left out.
///
/// Wildcards: `*` stands for any text, `?` for any character; `*` and `*.*`
/// match every name. Letter case is ignored.

#include <filesystem/export.h>
#include <filesystem/file_information.h>
#include <filesystem/mfc_text.h>

#include <boost/function.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace FileSystem {

/// Groups of files that differ only in their extension: the base name of each
/// file for which every extension of the list exists.
/// @param result    gets the base names, without folder and extension
/// @param folder    folder text that ends in a separator
/// @param mask      wildcard text of the base name
/// @param extension first extension, with its dot
/// @param ...       further extensions, `const char*`; the last argument is a
///                  null pointer of that type, which is required
/// @return number of names added
FILESYSTEM_API std::uint64_t EnumFiles(std::vector<std::string>& result, const char* folder,
                                       const char* mask, const char* extension, ...);

/// The names of the files of one folder, with extension, without folder.
/// @param result  gets the names
/// @param folder  folder text that ends in a separator
/// @param pattern wildcard text
/// @return number of names added
FILESYSTEM_API std::uint64_t EnumFiles(std::vector<std::string>& result, const char* folder,
                                       const char* pattern);

/// As the overload that fills a vector, for an MFC array.
FILESYSTEM_API std::uint64_t EnumFiles(CStringArray& result, const char* folder, const char* mask,
                                       const char* extension, ...);

/// The files of one folder that can be opened for reading, as records.
/// @param result  gets the records; `cFileName` holds the bare name
/// @param folder  folder, with or without trailing `\`, not null
/// @param pattern wildcard text, not null
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFilesWithPath(std::vector<FILE_INFORMATION>& result,
                                               const char* folder, const char* pattern);

/// The files of a folder or of a whole tree that can be opened for reading, as
/// full paths: those of the folder first, then those of each subfolder, parents
/// before children.
/// @param result    gets the paths, each beginning with `folder` as given
/// @param folder    folder, with or without trailing `\`, not null
/// @param pattern   wildcard text for the files, not null
/// @param recursive whether to go into subfolders
/// @return number of paths added. A path of over 259 bytes is cut and, as a
///         rule, left out because no file of the cut name exists.
FILESYSTEM_API std::uint64_t EnumFilesWithPath(std::vector<std::string>& result, const char* folder,
                                               const char* pattern, bool recursive);

/// As the record form of EnumFilesWithPath, with a filter.
/// @param result  gets the records; `cFileName` holds the bare name
/// @param folder  folder, with or without trailing `\`, not null
/// @param pattern wildcard text, not null
/// @param filter  gets the full path of each file that can be opened; non-zero
///                keeps the file. What it throws passes through; an empty filter
///                raises `boost::bad_function_call` at the first file.
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFilesWithPathEx(std::vector<FILE_INFORMATION>& result,
                                                 const char* folder, const char* pattern,
                                                 const boost::function1<int, const char*>& filter);

/// The folders below a folder, as records, depth first, parents before
/// children.
/// @param result    gets the records; `cFileName` holds the path relative to
///                  `folder`
/// @param folder    folder text that ends in a separator, not null
/// @param recursive non-zero for the whole tree, zero for direct children
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFolders(std::vector<FILE_INFORMATION>& result, const char* folder,
                                         int recursive);

/// The folders below a folder, as full paths that end in `\`, depth first,
/// parents before children.
/// @param result    gets the paths, each beginning with `folder` as given
/// @param folder    folder, with or without trailing `\`, not null
/// @param recursive non-zero for the whole tree, zero for direct children
/// @return number of paths added
FILESYSTEM_API std::uint64_t EnumFolders(std::vector<std::string>& result, const char* folder,
                                         int recursive);

/// As the record form of EnumFolders, with a filter that prunes the walk.
/// @param result    gets the records; `cFileName` holds the path relative to
///                  `folder`
/// @param folder    folder text that ends in a separator, not null
/// @param filter    gets the path of each folder, without trailing `\`; zero
///                  leaves out the folder and all below it. What it throws
///                  passes through; an empty filter raises
///                  `boost::bad_function_call` at the first folder.
/// @param recursive non-zero for the whole tree, zero for direct children
/// @return number of records added
FILESYSTEM_API std::uint64_t EnumFoldersEx(std::vector<FILE_INFORMATION>& result,
                                           const char* folder,
                                           const boost::function1<int, const char*>& filter,
                                           int recursive);

}  // namespace FileSystem
