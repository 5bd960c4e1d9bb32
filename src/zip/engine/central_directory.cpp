#include "zip/engine/central_directory.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/large_memory.h"

namespace zip_engine {
namespace {

// The farthest that an end record can begin from the end of the file, with the
// locator of the zip64 record in front of it.
constexpr std::size_t kLongestTail = kEndSize + 0xFFFF + kLocator64Size;

// End records that are followed to their directory at most; a comment may be
// full of them.
constexpr int kMostCandidates = 16;

// Bytes of a directory that are read before the records in them are checked, so
// that a lying size costs no more memory than the truth behind it.
constexpr std::size_t kReadStep = 1 << 20;

// Positions in a directory are counted with 32 bits.
constexpr std::uint64_t kLargestDirectory = 0xFFFFFFF0;

// The values of an end record, of the zip64 one where the plain one says so.
struct EndRecord {
  std::uint64_t entryCount = 0;
  std::uint64_t directorySize = 0;
  std::uint64_t directoryOffset = 0;
  std::uint64_t directoryEnd = 0;  // absolute; where the first end record begins
  bool countMayWrap = true;
};

bool readEnd64(const ArchiveFile& file, const unsigned char* locator, std::uint64_t locatorPosition,
               const unsigned char* end, EndRecord& record) {
  unsigned char bytes[kEnd64Size];
  // Behind a prefix the offset does not count from the file's start, but then
  // the record stands right in front of its locator.
  std::uint64_t position = load64(locator + 8);
  const auto stands = [&] {
    return position <= locatorPosition && locatorPosition - position >= kEnd64Size &&
           file.readAt(position, bytes, sizeof(bytes)) && load32(bytes) == kEnd64Signature;
  };
  if (!stands()) {
    if (locatorPosition < kEnd64Size) return false;
    position = locatorPosition - kEnd64Size;
    if (!stands()) return false;
  }
  if (load32(bytes + 16) != 0 || load32(bytes + 20) != 0) return false;
  const std::uint64_t count = load64(bytes + 32);
  if (load64(bytes + 24) != count) return false;
  if (load16(end + 10) == kSaturated16) {
    record.entryCount = count;
    record.countMayWrap = false;
  }
  if (load32(end + 12) == kSaturated32) record.directorySize = load64(bytes + 40);
  if (load32(end + 16) == kSaturated32) record.directoryOffset = load64(bytes + 48);
  record.directoryEnd = position;
  return true;
}

// Reads the values of the end record at `end`, whose absolute position is
// `position`. `tailStart` is where the bytes in front of it begin in memory.
bool readEnd(const ArchiveFile& file, const unsigned char* tailStart, const unsigned char* end,
             std::uint64_t position, EndRecord& record) {
  record.entryCount = load16(end + 10);
  record.directorySize = load32(end + 12);
  record.directoryOffset = load32(end + 16);
  record.directoryEnd = position;
  const bool saturated = record.entryCount == kSaturated16 ||
                         record.directorySize == kSaturated32 ||
                         record.directoryOffset == kSaturated32;
  if (saturated && static_cast<std::size_t>(end - tailStart) >= kLocator64Size) {
    const unsigned char* const locator = end - kLocator64Size;
    if (load32(locator) == kLocator64Signature) {
      return readEnd64(file, locator, position - kLocator64Size, end, record);
    }
  }
  // Archives of more than one disk are not read.
  return load16(end + 4) == 0 && load16(end + 6) == 0 && load16(end + 8) == load16(end + 10);
}

// Size of the record at `at`, or 0 if no whole record stands there.
std::size_t recordSize(const Bytes& blob, std::size_t at) {
  if (blob.size() - at < kCentralSize || load32(blob.data() + at) != kCentralSignature) return 0;
  const CentralRecord record{.bytes = blob.data() + at};
  return record.size() <= blob.size() - at ? record.size() : 0;
}

// Reads `size` bytes of records and counts them. What may follow the last record
// (a digital signature) is left out of the blob.
bool readRecords(const ArchiveFile& file, std::uint64_t position, std::uint64_t size, Bytes& blob,
                 std::uint64_t& count) {
  // Room for any usual directory, so that it is not moved while it grows; what a
  // lie asks for is not touched.
  constexpr std::uint64_t kUsual = 64 << 20;
  blob.clear();
  platform::reserveForFilling(blob, static_cast<std::size_t>(std::min(size, kUsual)));
  count = 0;
  std::size_t checked = 0;
  while (blob.size() < size) {
    const std::size_t start = blob.size();
    const std::size_t step =
        static_cast<std::size_t>(std::min<std::uint64_t>(size - start, kReadStep));
    blob.resize(start + step);
    if (!file.readAt(position + start, blob.data() + start, step)) return false;
    while (const std::size_t length = recordSize(blob, checked)) {
      checked += length;
      ++count;
    }
    // A record that goes on behind this step is shorter than the longest one.
    constexpr std::size_t kLongestRecord = kCentralSize + 3 * std::size_t{0xFFFF};
    if (blob.size() - checked > kLongestRecord) break;
    if (blob.size() - checked >= 4 && load32(blob.data() + checked) != kCentralSignature) break;
  }
  blob.resize(checked);
  return true;
}

bool readDirectoryAt(const ArchiveFile& file, const EndRecord& end, std::uint64_t position,
                     CentralDirectory& directory) {
  if (position < end.directoryOffset || end.directorySize > kLargestDirectory) return false;
  std::uint64_t count = 0;
  if (!readRecords(file, position, end.directorySize, directory.blob, count)) return false;
  // Old programs write the count modulo 65,536.
  const std::uint64_t counted = end.countMayWrap ? count & 0xFFFF : count;
  if (counted != end.entryCount) return false;
  directory.entryCount = count;
  directory.position = position;
  directory.base = position - end.directoryOffset;
  return true;
}

// Whether the local header of the first entry is where the directory says.
bool firstEntryStands(const ArchiveFile& file, const CentralDirectory& directory) {
  if (directory.entryCount == 0) return true;
  const CentralRecord record = recordAt(directory, 0);
  Bytes local(kLocalSize + record.nameLength());
  return record.localOffset <= directory.position - directory.base &&
         file.readAt(directory.base + record.localOffset, local.data(), local.size()) &&
         load32(local.data()) == kLocalSignature &&
         std::equal(record.name().begin(), record.name().end(),
                    reinterpret_cast<const char*>(local.data()) + kLocalSize);
}

bool readDirectory(const ArchiveFile& file, const EndRecord& end, CentralDirectory& directory) {
  if (end.directorySize > end.directoryEnd) return false;
  const std::uint64_t expected = end.directoryEnd - end.directorySize;
  const bool elsewhere = end.directoryOffset < expected && end.entryCount != 0;
  if (readDirectoryAt(file, end, expected, directory)) {
    // Either there is a prefix, or what stands here is the copy of a directory
    // whose writing was interrupted before the end record told of it.
    if (!elsewhere || firstEntryStands(file, directory)) return true;
    CentralDirectory told;
    if (readDirectoryAt(file, end, end.directoryOffset, told) && firstEntryStands(file, told)) {
      directory = std::move(told);
    }
    return true;
  }
  // Something stands between the directory and the end record.
  return elsewhere && readDirectoryAt(file, end, end.directoryOffset, directory);
}

}  // namespace

CentralRecord recordAt(const CentralDirectory& directory, std::size_t offset) {
  CentralRecord record{.bytes = directory.blob.data() + offset};
  record.compressedSize = load32(record.bytes + 20);
  record.uncompressedSize = load32(record.bytes + 24);
  record.localOffset = load32(record.bytes + 42);
  const bool saturated = record.uncompressedSize == kSaturated32 ||
                         record.compressedSize == kSaturated32 ||
                         record.localOffset == kSaturated32;
  if (!saturated) return record;

  // The zip64 field has those values only that are saturated, in this order.
  const unsigned char* field = record.extra();
  std::size_t left = record.extraLength();
  while (left >= 4) {
    const std::size_t length = load16(field + 2);
    if (length > left - 4) break;
    if (load16(field) == kZip64ExtraId) {
      const unsigned char* value = field + 4;
      std::size_t values = length / 8;
      for (std::uint64_t* target :
           {&record.uncompressedSize, &record.compressedSize, &record.localOffset}) {
        if (*target != kSaturated32 || values == 0) continue;
        *target = load64(value);
        value += 8;
        --values;
      }
      break;
    }
    field += 4 + length;
    left -= 4 + length;
  }
  return record;
}

bool readCentralDirectory(const ArchiveFile& file, CentralDirectory& directory) {
  const std::optional<std::uint64_t> size = file.size();
  if (!size || *size < kEndSize) return false;
  Bytes tail(static_cast<std::size_t>(std::min<std::uint64_t>(*size, kLongestTail)));
  const std::uint64_t tailPosition = *size - tail.size();
  if (!file.readAt(tailPosition, tail.data(), tail.size())) return false;

  // A record whose comment ends with the file comes before one with anything
  // behind it.
  int candidates = 0;
  for (const bool exact : {true, false}) {
    for (std::size_t at = tail.size() - kEndSize + 1; at-- > 0;) {
      const unsigned char* const end = tail.data() + at;
      if (load32(end) != kEndSignature) continue;
      const std::size_t commentLength = load16(end + 20);
      const std::size_t room = tail.size() - at - kEndSize;
      if (exact ? commentLength != room : commentLength >= room) continue;
      if (++candidates > kMostCandidates) return false;
      EndRecord record;
      if (!readEnd(file, tail.data(), end, tailPosition + at, record)) continue;
      if (!readDirectory(file, record, directory)) continue;
      directory.comment.assign(reinterpret_cast<const char*>(end + kEndSize), commentLength);
      return true;
    }
  }
  return false;
}

bool mayHoldEndRecord(std::string_view comment) {
  constexpr std::string_view kSignature("PK\5\6", 4);
  const std::size_t at = comment.find(kSignature);
  return at != std::string_view::npos && comment.size() - at >= kEndSize;
}

void appendEndRecords(Bytes& out, std::uint64_t directoryPosition, std::uint64_t directorySize,
                      std::uint64_t entryCount, const std::string& comment) {
  const bool zip64 = entryCount >= kSaturated16 || directorySize >= kSaturated32 ||
                     directoryPosition >= kSaturated32;
  if (zip64) {
    constexpr std::uint16_t kVersion = 45;
    append32(out, kEnd64Signature);
    append64(out, kEnd64Size - 12);
    append16(out, kVersion);
    append16(out, kVersion);
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
  append32(out, saturate32(directoryPosition));
  const std::size_t commentLength = std::min<std::size_t>(comment.size(), 0xFFFF);
  append16(out, static_cast<std::uint16_t>(commentLength));
  out.insert(out.end(), comment.begin(),
             comment.begin() + static_cast<std::ptrdiff_t>(commentLength));
}

}  // namespace zip_engine
