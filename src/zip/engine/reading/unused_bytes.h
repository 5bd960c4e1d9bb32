#pragma once
// Bytes of an archive that belong to no entry.

#include <cstdint>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/central_directory.h"

namespace zip_engine {

// Counts the bytes between the last entry and the directory, and after the end record. A data
// descriptor, which not every entry has, counts as used. 0 if the last entry cannot be read.
std::uint64_t unusedBytes(const ArchiveFile& file, const CentralDirectory& directory);

}  // namespace zip_engine
