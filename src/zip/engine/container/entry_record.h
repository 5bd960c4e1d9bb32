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
  std::uint64_t compressedSize = 0;
  std::uint64_t uncompressedSize = 0;
  // True if the local header has the sizes in a zip64 block, and a descriptor has them in 64 bits.
  // Needed if one of them is 4 GiB - 1 or more.
  bool hasZip64 = false;
  std::uint16_t internalAttributes = 0;
  std::uint32_t externalAttributes = 0;
  std::string name;
  Bytes localExtra;
  Bytes centralExtra;
  std::string comment;
};

// Bytes that the extra field of a central record grows by if the entry lies beyond 4 GiB, and those
// that the two extra fields of one with `hasZip64` grow by at most.
inline constexpr std::size_t kZip64OffsetBlock = 12;
inline constexpr std::size_t kZip64LocalBlock = 20;
inline constexpr std::size_t kZip64CentralBlock = 28;

inline bool needsZip64(std::uint64_t compressedSize, std::uint64_t uncompressedSize) {
  return compressedSize >= kSaturated32 || uncompressedSize >= kSaturated32;
}

void appendLocalHeader(Bytes& out, const EntryRecord& record);
// The data descriptor, which follows the data.
void appendDescriptor(Bytes& out, const EntryRecord& record);
// `localOffset` counts from the archive's base.
void appendCentralRecord(Bytes& out, const EntryRecord& record, std::uint64_t localOffset);

// Returns the DOS date of date words. Dates before 1980 and after 2107 become the first and the
// last one.
std::uint32_t dosDateOf(const ZipDateWords& words);

}  // namespace zip_engine
