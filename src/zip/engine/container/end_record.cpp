#include "zip/engine/container/end_record.h"

#include <algorithm>

namespace zip_engine {
namespace {

bool readsEnd64(const ArchiveFile& file, std::uint64_t position,
                unsigned char (&bytes)[kEnd64Size]) {
  return file.readAt(position, bytes, sizeof(bytes)) && load32(bytes) == kEnd64Signature;
}

// The values of a zip64 record.
struct End64 {
  std::uint64_t position;  // absolute
  std::uint64_t entryCount;
  std::uint64_t directorySize;
  std::uint64_t directoryOffset;
};

// Reads the zip64 record that a locator refers to. Nothing if it is damaged.
std::optional<End64> readEnd64(const ArchiveFile& file, const unsigned char* locator,
                               std::uint64_t locatorPosition) {
  if (locatorPosition < kEnd64Size) return std::nullopt;
  const std::uint64_t last = locatorPosition - kEnd64Size;
  unsigned char bytes[kEnd64Size];
  std::uint64_t position = std::min(load64(locator + 8), last);
  if (!readsEnd64(file, position, bytes)) {
    // In an archive with a prefix the offset does not count from the start of the file, but the
    // record directly precedes its locator.
    position = last;
    if (!readsEnd64(file, position, bytes)) return std::nullopt;
  }
  const std::uint64_t count = load64(bytes + 32);
  if (load32(bytes + 16) != 0 || load32(bytes + 20) != 0 || load64(bytes + 24) != count) {
    return std::nullopt;
  }
  return End64{position, count, load64(bytes + 40), load64(bytes + 48)};
}

// Replaces the saturated values of `record` by those of the zip64 record. Without saturated values
// it counts only if it has the same ones.
void useEnd64(const End64& end64, bool isSaturated, EndRecord& record) {
  if (!isSaturated) {
    const bool isEqual = record.entryCount == end64.entryCount &&
                         record.directorySize == end64.directorySize &&
                         record.directoryOffset == end64.directoryOffset;
    if (isEqual) record.equalEnd64 = end64.position;
    return;
  }
  if (record.entryCount == kSaturated16) {
    record.entryCount = end64.entryCount;
    record.countMayWrap = false;
  }
  if (record.directorySize == kSaturated32) record.directorySize = end64.directorySize;
  if (record.directoryOffset == kSaturated32) record.directoryOffset = end64.directoryOffset;
  record.directoryEnd = end64.position;
}

// Has the end record of an archive whose comment is not unusually long.
constexpr std::size_t kUsualTail = 4 << 10;

// Reads the last bytes of a file of `size` bytes, `length` or all.
bool readTail(const ArchiveFile& file, std::uint64_t size, std::size_t length, FilePiece& tail) {
  tail.bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size, length)));
  tail.position = size - tail.bytes.size();
  if (file.readAt(tail.position, tail.bytes.data(), tail.bytes.size())) return true;
  tail = {};
  return false;
}

}  // namespace

std::optional<std::size_t> findLastEndRecord(const FilePiece& piece) {
  if (piece.bytes.size() < kEndSize) return std::nullopt;
  for (std::size_t at = piece.bytes.size() - kEndSize + 1; at-- > 0;) {
    if (load32(piece.bytes.data() + at) == kEndSignature) return at;
  }
  return std::nullopt;
}

bool readEndRecord(const ArchiveFile& file, const FilePiece& piece, std::size_t at,
                   EndRecord& record) {
  const unsigned char* const end = piece.bytes.data() + at;
  record = {.entryCount = load16(end + 10),
            .directorySize = load32(end + 12),
            .directoryOffset = load32(end + 16),
            .directoryEnd = piece.position + at,
            .equalEnd64 = {},
            .end = piece.position + at + kEndSize,
            .comment = {}};
  const std::size_t commentLength =
      std::min<std::size_t>(load16(end + 20), piece.bytes.size() - at - kEndSize);
  record.end += commentLength;
  record.comment.assign(reinterpret_cast<const char*>(end + kEndSize), commentLength);
  const bool saturated = record.entryCount == kSaturated16 ||
                         record.directorySize == kSaturated32 ||
                         record.directoryOffset == kSaturated32;
  if (at >= kLocator64Size && load32(end - kLocator64Size) == kLocator64Signature) {
    const std::optional<End64> end64 =
        readEnd64(file, end - kLocator64Size, record.directoryEnd - kLocator64Size);
    if (end64) useEnd64(*end64, saturated, record);
    if (saturated) return end64.has_value();
  }
  return load16(end + 4) == 0 && load16(end + 6) == 0 && load16(end + 8) == load16(end + 10);
}

std::optional<EndRecord> readLastEndRecord(const ArchiveFile& file, FilePiece& tail) {
  const std::optional<std::uint64_t> size = file.size();
  if (!size || !readTail(file, *size, kUsualTail, tail)) return std::nullopt;
  std::optional<std::size_t> at = findLastEndRecord(tail);
  // A zip64 locator may precede the record.
  if (!at || *at < kLocator64Size) {
    if (!readTail(file, *size, kLongestTail, tail)) return std::nullopt;
    at = findLastEndRecord(tail);
  }
  EndRecord end;
  if (!at || !readEndRecord(file, tail, *at, end)) return std::nullopt;
  return end;
}

bool mayHoldEndRecord(std::string_view comment) {
  const std::size_t at = comment.find(kEndSignatureText);
  return at != std::string_view::npos && comment.size() - at >= kEndSize;
}

bool needsEnd64(std::uint64_t directoryPosition, std::uint64_t directorySize,
                std::uint64_t entryCount) {
  return entryCount >= kSaturated16 || directorySize >= kSaturated32 ||
         directoryPosition >= kSaturated32;
}

void appendEndRecords(Bytes& out, std::uint64_t directoryPosition, std::uint64_t directorySize,
                      std::uint64_t entryCount, const std::string& comment, bool withEnd64) {
  const bool isNeeded = needsEnd64(directoryPosition, directorySize, entryCount);
  if (isNeeded || withEnd64) {
    append32(out, kEnd64Signature);
    append64(out, kEnd64Size - 12);
    append16(out, kVersionZip64);
    append16(out, kVersionZip64);
    append32(out, 0);
    append32(out, 0);
    append64(out, entryCount);
    append64(out, entryCount);
    append64(out, directorySize);
    append64(out, directoryPosition);

    append32(out, kLocator64Signature);
    append32(out, 0);
    append64(out, directoryPosition + directorySize);
    append32(out, 1);
  }
  const auto saturate16 = [](std::uint64_t value) {
    return static_cast<std::uint16_t>(std::min<std::uint64_t>(value, kSaturated16));
  };
  const auto saturate32 = [](std::uint64_t value) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, kSaturated32));
  };
  append32(out, kEndSignature);
  append16(out, 0);
  append16(out, 0);
  append16(out, saturate16(entryCount));
  append16(out, saturate16(entryCount));
  append32(out, saturate32(directorySize));
  append32(out, isNeeded || !withEnd64 ? saturate32(directoryPosition) : kSaturated32);
  append16(out, static_cast<std::uint16_t>(comment.size()));
  out.insert(out.end(), comment.begin(), comment.end());
}

}  // namespace zip_engine
