#pragma once
// The values of an entry's local header and central record, and writing them.

#include <cstdint>
#include <string>

#include "zip/engine.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

struct EntryRecord {
  // Host NTFS: where it is FAT, some programs take even flagged names for OEM ones.
  std::uint16_t versionMadeBy = 11 << 8 | kVersionDeflate;
  std::uint16_t versionNeeded = kVersionStored;
  std::uint16_t flags = 0;
  std::uint16_t method = 0;
  std::uint32_t dosDate = 0;
  std::uint32_t crc = 0;
  std::uint32_t compressedSize = 0;
  std::uint32_t uncompressedSize = 0;
  std::uint16_t internalAttributes = 0;
  std::uint32_t externalAttributes = 0;
  std::string name;
  Bytes localExtra;
  Bytes centralExtra;
  std::string comment;
};

// Bytes that a record's extra field grows by if the entry lies beyond 4 GiB.
inline constexpr std::size_t kZip64OffsetBlock = 12;

void appendLocalHeader(Bytes& out, const EntryRecord& record);
// The data descriptor, which follows the data.
void appendDescriptor(Bytes& out, const EntryRecord& record);
// `localOffset` counts from the archive's base.
void appendCentralRecord(Bytes& out, const EntryRecord& record, std::uint64_t localOffset);

// Returns the DOS date of date words. Dates before 1980 and after 2107 become the first and the
// last one.
std::uint32_t dosDateOf(const ZipDateWords& words);

}  // namespace zip_engine
