#pragma once
// A writer, and what its calls share.

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "zip/engine.h"
#include "zip/engine/container/entry_record.h"
#include "zip/engine/container/status.h"
#include "zip/engine/writing/entry_output.h"
#include "zip/engine/writing/new_entry.h"
#include "zip/engine/writing/transaction.h"

namespace zip_engine {

inline constexpr std::size_t kLongestField = 0xFFFF;

// Reports whether the lengths of the variable fields can be written, with `added` more bytes in the
// extra fields.
inline bool fitsFields(const EntryRecord& record, std::size_t added) {
  const std::size_t local = record.hasZip64 ? kZip64LocalBlock : 0;
  const std::size_t central = record.hasZip64 ? kZip64CentralBlock : kZip64OffsetBlock;
  return record.name.size() <= kLongestField && record.comment.size() <= kLongestField &&
         record.localExtra.size() <= kLongestField - local - added &&
         record.centralExtra.size() <= kLongestField - central - added;
}

// The central records of an archive that stay in it.
struct KeptRecords {
  Bytes blob;
  std::uint64_t count = 0;
};

}  // namespace zip_engine

// The bytes of an entry do not depend on its position, which only the central record has.
struct ZipPreparedEntry {
  zip_engine::EntryRecord record;
  zip_engine::Bytes bytes;
};

struct ZipWriter {
  struct Completed {
    std::uint64_t start;      // absolute position of the local header
    std::size_t recordStart;  // offset of the record in `records`
  };

  zip_engine::Transaction archive;
  std::optional<zip_engine::MemoryOutput> memory;  // instead of the archive, if it prepares entries
  std::unique_ptr<ZipPreparedEntry> prepared;      // the entry that was completed last
  int mode = ZipModeAppend;
  bool usesAes = false;                   // for entries with a password
  bool usesSlashes = false;               // in the names of new entries
  bool isUnix = false;                    // the host of new entries
  std::uint64_t lastWrite = 0;            // of new entries
  bool knowsCrc = true;                   // of new entries with the traditional encryption
  std::optional<std::uint64_t> nextSize;  // of the content of the next new entry
  zip_engine::Encoders encoders;
  std::optional<zip_engine::NewEntry> entry;
  std::optional<zip_engine::KeptRecords> kept;  // if entries of the archive were dropped
  zip_engine::Bytes records;                    // the central records of the completed entries
  std::vector<Completed> completed;

  zip_engine::EntryOutput& output() {
    if (memory) return *memory;
    return archive;
  }
  void add(const zip_engine::EntryRecord& record, std::uint64_t start) {
    completed.push_back({start, records.size()});
    appendCentralRecord(records, record, start - archive.base());
  }
  void dropLast() {
    archive.rewind(completed.back().start);
    records.resize(completed.back().recordStart);
    completed.pop_back();
  }
  void dropOpen() {
    if (!entry) return;
    output().rewind(entry->start());
    entry.reset();
  }
};
