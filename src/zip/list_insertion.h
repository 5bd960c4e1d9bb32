#pragma once
// Inserting a list of files with one commit.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "zip/archive_writer.h"

namespace zip {

// Paths of files and the names of their entries, as the caller passes them.
using FileList = std::vector<std::pair<std::string, std::string>>;

// Inserts files into the archive at `path`, from the first to the last one before a file that
// cannot be inserted. An entry of a name of the list is replaced if `overwrite` is set; if not, its
// file cannot be inserted. Of files with one name the last one counts. Returns the number of files
// before the one that failed, all if none did; 0 if the archive is unchanged.
std::size_t insertFiles(const std::string& path, const FileList& files, bool overwrite,
                        const Encryption& encryption);

}  // namespace zip
