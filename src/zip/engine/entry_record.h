#pragma once
// What an entry's local header and central record tell, and writing them.

#include <cstdint>
#include <string>

#include "zip/engine.h"
#include "zip/engine/format.h"

namespace zip_engine {

struct EntryRecord {
  std::uint16_t versionMadeBy = 20;  // host FAT
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

void appendLocalHeader(Bytes& out, const EntryRecord& record);
// `localOffset` counts from the archive's base.
void appendCentralRecord(Bytes& out, const EntryRecord& record, std::uint64_t localOffset);

// A DOS date of date words, the nearest one that it can hold.
std::uint32_t dosDateOf(const ZipDateWords& words);

}  // namespace zip_engine
