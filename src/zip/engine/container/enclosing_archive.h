#pragma once
// Recognizing an archive that is stored as an entry of another one.
//
// An outer archive whose own end record is cut off or damaged ends with the end record of an
// archive stored in it:
//
//   | local header | doc.txt | local header | inner.zip ........ PK56 | rest of the directory
//                                           ^ base                ^ last end record
//
// By its records alone it is a sound archive with a prefix, like a self-extracting program. Only
// the prefix shows the difference: it has a local header whose data includes the base.

#include <cstdint>

#include "zip/engine/container/archive_file.h"

namespace zip_engine {

// Reports whether the archive that begins at `base` may be the data of an entry of an enclosing
// archive. Follows at most 65,536 local headers from the start of the file, and searches the 192 KB
// before the base; where these do not suffice, the answer is yes.
bool mayBeEnclosed(const ArchiveFile& file, std::uint64_t base);

}  // namespace zip_engine
