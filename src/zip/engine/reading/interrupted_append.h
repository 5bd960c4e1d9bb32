#pragma once
// Recognizing an append that a power failure interrupted while it wrote its backup directory
// (transaction.h).
//
//   | entries | directory | end record | zeros | pieces of the backup directory and its end record
//   |
//
// No byte of the archive has changed yet, but its end record is no longer the last one, or is far
// from the end of the file. An earlier end record is no proof of anything: it may be that of an
// archive stored in this one, or of a file that was damaged later. So it counts only if nothing but
// such an append explains the rest of the file: each sector is zero, or has the bytes that the
// backup of just this directory has there.

#include <cstdint>
#include <functional>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/end_record.h"

namespace zip_engine {

// The farthest that the end record of the archive may be from the end of the file.
inline constexpr std::uint64_t kLongestInterruption = 128 << 20;

// Reports whether a sector of the directory's records is missing.
bool lacksSector(const CentralDirectory& directory);

// Reads the directory that an end record refers to, if it is sound.
using ReadDirectory = std::function<bool(const EndRecord&, CentralDirectory&)>;

// Reads the directory of the archive before the append; `tail` is the end of the file. Returns
// false if the file does not look like that. Follows a few end records at most.
bool readInterruptedAppend(const ArchiveFile& file, const FilePiece& tail,
                           const ReadDirectory& readDirectory, CentralDirectory& directory);

}  // namespace zip_engine
