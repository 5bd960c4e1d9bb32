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

// Inserts files into the archive at `path` up to the first one that fails, and returns the number
// of those inserted; with 0 the archive is unchanged. Entries of the same name are replaced in one
// step with the insertion if `overwrite` is set; if not, the file fails. A file with the name of an
// earlier one fails. Names that differ only in `/` and `\` are the same.
std::size_t insertFiles(const std::string& path, const FileList& files, bool overwrite,
                        const Encryption& encryption);

}  // namespace zip
