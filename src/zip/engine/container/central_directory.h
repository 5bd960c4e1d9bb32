#pragma once
// Finding, proving and reading the central directory of an archive.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

// The records of all entries, unchanged. Each was checked to end, with its name, extra field and
// comment, within the directory.
struct CentralDirectory {
  Bytes blob;
  std::uint64_t entryCount = 0;
  std::uint64_t position = 0;  // absolute, in the file
  std::uint64_t base = 0;      // absolute position that offsets count from
  std::uint64_t end = 0;       // absolute, after the end record and its comment
  std::string comment;
  bool isInOrder = false;  // as RecordWalk::isInOrder()
};

// One record of a central directory.
struct CentralRecord {
  const unsigned char* bytes = nullptr;
  std::uint64_t compressedSize = 0;
  std::uint64_t uncompressedSize = 0;
  std::uint64_t localOffset = 0;  // from the directory's base

  std::uint16_t versionMadeBy() const { return load16(bytes + 4); }
  std::uint16_t versionNeeded() const { return load16(bytes + 6); }
  std::uint16_t flags() const { return load16(bytes + 8); }
  std::uint16_t method() const { return load16(bytes + 10); }
  std::uint16_t time() const { return load16(bytes + 12); }
  std::uint32_t dosDate() const { return load32(bytes + 12); }
  std::uint32_t crc() const { return load32(bytes + 16); }
  std::uint16_t nameLength() const { return load16(bytes + 28); }
  std::uint16_t extraLength() const { return load16(bytes + 30); }
  std::uint16_t commentLength() const { return load16(bytes + 32); }
  std::uint16_t diskNumber() const { return load16(bytes + 34); }
  std::uint16_t internalAttributes() const { return load16(bytes + 36); }
  std::uint32_t externalAttributes() const { return load32(bytes + 38); }
  std::string_view name() const {
    return {reinterpret_cast<const char*>(bytes + kCentralSize), nameLength()};
  }
  const unsigned char* extra() const { return bytes + kCentralSize + nameLength(); }
  const unsigned char* comment() const { return extra() + extraLength(); }
  std::size_t size() const { return kCentralSize + nameLength() + extraLength() + commentLength(); }
};

// Reports whether bytes at an offset of the directory's blob look like a whole record.
bool isRecordAt(const CentralDirectory& directory, std::size_t offset);
// Reads the record that begins at an offset of the directory's blob.
CentralRecord recordAt(const CentralDirectory& directory, std::size_t offset);

// Reads the directory that the last end record of the file refers to, if it is proved to be that of
// the whole file, or the one that was there before an interrupted append. Returns false otherwise;
// then `directory` is unspecified.
bool readCentralDirectory(const ArchiveFile& file, CentralDirectory& directory);

}  // namespace zip_engine
