#pragma once
// Copying an entry of one archive to another as it is stored.

#include <cstdint>
#include <functional>

#include "zip/engine.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/entry_record.h"
#include "zip/engine/container/local_entry.h"
#include "zip/engine/writing/transaction.h"

namespace zip_engine {

// Returns the record of the copy, without the zip64 blocks that it does not need.
EntryRecord recordOf(const CentralRecord& central, const LocalEntry& local);

// Appends the local header, the data and the descriptor of the entry, and completes its record.
// Calls `advance` with the size of each block. Returns a status of the engine.
int copyEntry(Transaction& archive, EntryRecord& record, ZipReader& from,
              std::uint64_t dataPosition, const std::function<bool(std::uint64_t)>& advance);

}  // namespace zip_engine
