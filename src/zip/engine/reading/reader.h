#pragma once
// The parts of a reader that the writer needs to copy entries as they are stored.

#include <cstdint>

#include "zip/engine.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/local_entry.h"

namespace zip_engine {

// Reads the central record and the local header of the current entry. Returns null if there is no
// entry or its header cannot be read.
const LocalEntry* readCurrent(ZipReader& reader, CentralRecord& record);
// Reads bytes of the archive.
bool readBytes(ZipReader& reader, std::uint64_t position, unsigned char* buffer, std::size_t size);

}  // namespace zip_engine
