#pragma once
// What the writer needs of a reader to copy entries as they are stored.

#include <cstdint>

#include "zip/engine.h"
#include "zip/engine/central_directory.h"

namespace zip_engine {

// Where an entry's local header and stored bytes lie; checked to be inside the
// archive and apart from all other entries.
struct EntrySpan {
  std::uint64_t dataPosition = 0;
  Bytes localExtra;
};

// The central record of the current entry; bytes is null if there is none.
CentralRecord currentRecord(const ZipReader& reader);
bool currentSpan(ZipReader& reader, EntrySpan& span);
// Reads the archive's bytes as they are.
bool readBytes(ZipReader& reader, std::uint64_t position, unsigned char* buffer, std::size_t size);

}  // namespace zip_engine
