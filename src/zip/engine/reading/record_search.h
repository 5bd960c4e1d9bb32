#pragma once
// Finding the record of one entry without keeping those of all others.

#include <string_view>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/central_directory.h"

namespace zip_engine {

enum class RecordSearch { Found, Missing, Undecided };

// Searches the archive's directory for the last record of a name in the OEM code page, in one pass
// through a small buffer, which stays in the cache. If it is found, the blob of `directory` has its
// record, and the next one, which limits its data. Undecided, although the archive may be sound, if
// there is a prefix, a zip64 field or a long record, if the entries are not in order, and for all
// that readCentralDirectory() does not accept at first sight.
RecordSearch findRecord(const ArchiveFile& file, std::string_view oemName,
                        CentralDirectory& directory);

}  // namespace zip_engine
