#pragma once
// The end-of-central-directory record and its zip64 form (APPNOTE 4.3.14 to 4.3.16).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

// kEndSignature as it is in a file.
inline constexpr std::string_view kEndSignatureText = "PK\5\6";

// The farthest that an end record can begin from the end of the file, with the zip64 locator that
// precedes it.
inline constexpr std::size_t kLongestTail = kEndSize + 0xFFFF + kLocator64Size;

// The last bytes of a file, or any other piece of it in which end records are searched.
struct FilePiece {
  std::uint64_t position = 0;  // absolute
  Bytes bytes;
};

// The values of an end record, taken from the zip64 record where the plain one refers to it.
struct EndRecord {
  std::uint64_t entryCount = 0;
  std::uint64_t directorySize = 0;
  std::uint64_t directoryOffset = 0;  // from the archive's base
  std::uint64_t directoryEnd = 0;     // absolute; the position of the first end record
  // The position of a zip64 record that has the same values, although none refers to it.
  std::optional<std::uint64_t> equalEnd64;
  std::uint64_t end = 0;     // absolute, after the comment
  bool countMayWrap = true;  // some programs write the count modulo 65,536
  std::string comment;

  // Reports whether the directory may have so many records.
  bool hasCount(std::uint64_t count) const {
    return (countMayWrap ? count & 0xFFFF : count) == entryCount;
  }
};

// Returns the offset in the piece of the last whole end record. It is the only one that other
// programs use, whatever its values.
std::optional<std::size_t> findLastEndRecord(const FilePiece& piece);

// Reads the end record at an offset of the piece. A comment that extends past the piece is cut
// there. Returns false for an archive of more than one disk and for a damaged zip64 record.
bool readEndRecord(const ArchiveFile& file, const FilePiece& piece, std::size_t at,
                   EndRecord& record);

// Reads the last end record of a file. Returns nothing if there is none that readEndRecord() accepts.
// `tail` becomes the end of the file in either case, or is empty if that cannot be read.
std::optional<EndRecord> readLastEndRecord(const ArchiveFile& file, FilePiece& tail);

// Reports whether other programs may find an end record in the comment, and with it another
// directory.
bool mayHoldEndRecord(std::string_view comment);

// Reports whether the end record needs the zip64 records.
bool needsEnd64(std::uint64_t directoryPosition, std::uint64_t directorySize,
                std::uint64_t entryCount);

// Appends the end record, after the zip64 records if a value needs them, or `withEnd64` is set.
// `directoryPosition` counts from the base. The comment has at most 65,535 bytes.
void appendEndRecords(Bytes& out, std::uint64_t directoryPosition, std::uint64_t directorySize,
                      std::uint64_t entryCount, const std::string& comment, bool withEnd64 = false);

}  // namespace zip_engine
