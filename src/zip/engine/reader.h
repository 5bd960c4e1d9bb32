#pragma once
// The parts of a reader that the writer needs to copy entries as they are stored.

#include <cstdint>

#include "zip/engine.h"
#include "zip/engine/central_directory.h"
#include "zip/engine/local_entry.h"

namespace zip_engine {

// The central record of the current entry; its bytes are null if there is none.
CentralRecord currentRecord(const ZipReader& reader);
// The local entry of the current record, or null if it cannot be read.
const LocalEntry* currentLocalEntry(ZipReader& reader);
// Reads bytes of the archive.
bool readBytes(ZipReader& reader, std::uint64_t position, unsigned char* buffer, std::size_t size);

}  // namespace zip_engine
