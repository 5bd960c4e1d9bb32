#pragma once
// Copying an entry of one archive to another as it is stored.

#include <cstdint>

#include "zip/engine.h"
#include "zip/engine/central_directory.h"
#include "zip/engine/entry_record.h"
#include "zip/engine/local_entry.h"
#include "zip/engine/transaction.h"

namespace zip_engine {

// Returns the record of the copy, without the zip64 blocks that it does not need.
EntryRecord recordOf(const CentralRecord& central, const LocalEntry& local);

// Appends the local header, the data and the descriptor of the entry, and completes its record.
bool copyEntry(Transaction& archive, EntryRecord& record, ZipReader& from,
               std::uint64_t dataPosition);

}  // namespace zip_engine
