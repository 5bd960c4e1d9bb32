#pragma once
// Inserting an entry into an archive.

#include <functional>
#include <string>

#include "zip/archive_writer.h"

namespace zip {

// True if there is a file without bytes. It becomes an archive with its first entry.
bool isEmptyFile(const std::string& path);

// Inserts the entry that `add` writes into the archive at `path`. An existing entry `name` is
// replaced if `overwrite` is set, else nothing is changed. If there is an entry to replace and
// `hasSource()` is false, the entry is removed and the insertion fails.
bool insertEntry(const std::string& path, const std::string& name, bool overwrite,
                 const std::function<bool()>& hasSource,
                 const std::function<bool(ArchiveWriter&)>& add);

}  // namespace zip
