#pragma once
// Archives that the commands read.

#include <filesystem/archive.h>

#include <string>
#include <vector>

// Opens an archive. Throws Failure.
FileSystem::Archive openArchive(const std::string& path);

// The entries that the patterns select, in the order of the archive `zip`. A pattern that is the
// name of an entry selects that name only. In any other `*` matches any text, `?` any character,
// and `/` and `\` are the same. Throws Failure if a pattern selects nothing.
std::vector<FileSystem::Entry> selectEntries(const std::vector<FileSystem::Entry>& entries,
                                             const std::vector<std::string>& patterns,
                                             const std::string& zip);

// The name of a compression method, its number if it has none.
std::string methodText(std::uint16_t method);

// Why an entry could not be read or extracted.
std::string failureText(const FileSystem::Entry& entry, FileSystem::Reason reason);
