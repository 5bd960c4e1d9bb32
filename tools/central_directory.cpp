#include "central_directory.h"

#include <algorithm>

#include "file_bytes.h"

namespace {

constexpr std::uint32_t kRecordSignature = 0x02014b50;
constexpr std::uint32_t kEnd64Signature = 0x06064b50;
constexpr std::uint32_t kLocator64Signature = 0x07064b50;
constexpr std::uint32_t kSplitSignature = 0x08074b50;
constexpr std::size_t kRecordSize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kLocator64Size = 20;
// An end record can be followed by a comment of at most this size.
constexpr std::size_t kLongestComment = 0xFFFF;

constexpr std::uint16_t kAesMethod = 99;
constexpr std::uint16_t kZip64Extra = 0x0001;
constexpr std::uint16_t kAesExtra = 0x9901;

// The values of an end record. Those that are all ones are replaced by the zip64 record's.
struct End {
  std::uint64_t position;  // of the first end record
  std::uint64_t count;
  std::uint64_t directorySize;
  std::uint64_t directoryOffset;  // as stored; from the beginning of the archive
  bool countMayWrap;              // old programs store the count modulo 65,536
};

End endAt(File& file, Bytes record, std::uint64_t position) {
  End end{position, record.u16(10), record.u32(12), record.u32(16), true};
  const bool isFullCount = end.count == 0xFFFF;
  const bool isFullSize = end.directorySize == 0xFFFFFFFF;
  const bool isFullOffset = end.directoryOffset == 0xFFFFFFFF;
  if (!(isFullCount || isFullSize || isFullOffset) || position < kLocator64Size + kEnd64Size)
    return end;
  const std::string locator = file.read(position - kLocator64Size, kLocator64Size);
  if (Bytes(locator).u32(0) != kLocator64Signature) return end;
  // The stored position is wrong in a file with a prefix; the record then is
  // directly before its locator.
  const std::uint64_t last = position - kLocator64Size - kEnd64Size;
  for (const std::uint64_t at : {Bytes(locator).u64(8), last}) {
    const std::string bytes = file.read(at, kEnd64Size);
    const Bytes end64(bytes);
    if (at > last || end64.u32(0) != kEnd64Signature) continue;
    return {at, isFullCount ? end64.u64(32) : end.count,
            isFullSize ? end64.u64(40) : end.directorySize,
            isFullOffset ? end64.u64(48) : end.directoryOffset, !isFullCount};
  }
  return end;
}

// Applies the extra field with zip64 sizes and the one of AES entries.
void applyExtra(Bytes extra, EntryRecord& record) {
  while (extra.size() >= 4) {
    const Bytes field = extra.at(4, extra.u16(2));
    std::size_t position = 0;
    const auto widen = [&](std::uint64_t& value) {
      if (value != 0xFFFFFFFF || field.size() < position + 8) return;
      value = field.u64(position);
      position += 8;
    };
    if (extra.u16(0) == kZip64Extra) {
      widen(record.size);
      widen(record.packedSize);
      widen(record.headerOffset);
    } else if (extra.u16(0) == kAesExtra && record.method == kAesMethod) {
      record.method = field.u16(5);
    }
    extra = extra.at(4 + field.size());
  }
}

Encryption encryptionOf(std::uint16_t flags, std::uint16_t method) {
  constexpr std::uint16_t kEncrypted = 1;
  constexpr std::uint16_t kStrong = 1 << 6;
  if ((flags & kEncrypted) == 0) return Encryption::kNone;
  if (method == kAesMethod) return Encryption::kAes;
  return (flags & kStrong) != 0 ? Encryption::kStrong : Encryption::kTraditional;
}

// Programs of Unix store the file's mode in the upper half of the attributes.
bool isUnixLink(std::uint16_t versionMadeBy, std::uint32_t attributes) {
  constexpr unsigned kUnix = 3;
  constexpr std::uint32_t kLinkType = 0xA;
  return versionMadeBy >> 8 == kUnix && attributes >> 28 == kLinkType;
}

EntryRecord recordOf(Bytes bytes) {
  EntryRecord record;
  record.flags = bytes.u16(8);
  record.method = bytes.u16(10);
  record.time = bytes.u16(12);
  record.date = bytes.u16(14);
  record.crc = bytes.u32(16);
  record.packedSize = bytes.u32(20);
  record.size = bytes.u32(24);
  record.nameLength = bytes.u16(28);
  record.attributes = bytes.u32(38);
  record.headerOffset = bytes.u32(42);
  record.isLink = isUnixLink(bytes.u16(4), record.attributes);
  record.encryption = encryptionOf(record.flags, record.method);
  const Bytes rest = bytes.at(kRecordSize + record.nameLength);
  applyExtra(rest.at(0, bytes.u16(30)), record);
  record.comment = rest.at(bytes.u16(30)).text();
  return record;
}

// The records of the directory at `position`. Returns nothing if it is not a
// whole directory of as many entries as the end record says.
std::optional<std::vector<EntryRecord>> recordsAt(File& file, const End& end,
                                                  std::uint64_t position) {
  if (position < end.directoryOffset) return std::nullopt;
  const std::string bytes = file.read(position, end.directorySize);
  std::vector<EntryRecord> records;
  for (Bytes rest(bytes); rest.u32(0) == kRecordSignature;) {
    const std::size_t size = kRecordSize + std::size_t{rest.u16(28)} + rest.u16(30) + rest.u16(32);
    if (rest.size() < size) break;
    records.push_back(recordOf(rest.at(0, size)));
    records.back().headerOffset += position - end.directoryOffset;
    rest = rest.at(size);
  }
  const std::uint64_t count = end.countMayWrap ? records.size() & 0xFFFF : records.size();
  if (count != end.count) return std::nullopt;
  return records;
}

// The records that an end record leads to: the directory is directly before it,
// as it is also in a file with a prefix, or else where the record says.
std::optional<std::vector<EntryRecord>> recordsOf(File& file, const End& end) {
  if (end.directorySize > end.position) return std::nullopt;
  if (auto records = recordsAt(file, end, end.position - end.directorySize)) return records;
  return recordsAt(file, end, end.directoryOffset);
}

// Bytes before the end record that belong to neither an entry nor the directory.
std::uint64_t unusedBefore(File& file, const End& end, const std::vector<EntryRecord>& records) {
  constexpr std::uint64_t kLongestDescriptor = 24;
  if (records.empty()) return 0;
  const auto last = std::max_element(
      records.begin(), records.end(),
      [](const auto& a, const auto& b) { return a.headerOffset < b.headerOffset; });
  const std::string bytes = file.read(last->headerOffset, kLocalSize);
  const Bytes header(bytes);
  if (header.u32(0) != kLocalSignature || last->packedSize > end.position) return 0;
  const std::uint64_t used = last->headerOffset + kLocalSize + header.u16(26) + header.u16(28) +
                             last->packedSize + kLongestDescriptor + end.directorySize;
  return end.position > used ? end.position - used : 0;
}

// Position of the last end record that begins before `limit` and not before `first`.
std::optional<std::uint64_t> findEnd(File& file, std::uint64_t first, std::uint64_t limit) {
  constexpr std::uint64_t kBlock = 1 << 20;
  for (std::uint64_t end = limit; end > first;) {
    const std::uint64_t begin = end - std::min(end - first, kBlock);
    // A signature that begins in this block may extend into the next.
    const std::string block = file.read(begin, std::min(file.size(), end + 3) - begin);
    const std::size_t at = block.rfind("PK\5\6", static_cast<std::size_t>(end - begin - 1));
    if (at != std::string::npos) return begin + at;
    end = begin;
  }
  return std::nullopt;
}

// Start of the part of the file in which an end record with its comment fits.
std::uint64_t tailStart(const File& file) {
  return file.size() - std::min<std::uint64_t>(file.size(), kEndSize + kLongestComment);
}

// End records begin before this position.
std::uint64_t endLimit(const File& file) {
  return file.size() < kEndSize ? 0 : file.size() - kEndSize + 1;
}

}  // namespace

std::optional<CentralDirectory> readCentralDirectory(const std::filesystem::path& path,
                                                     std::size_t count) {
  // As many and as far as the library considers.
  constexpr int kMostEnds = 5;
  constexpr std::uint64_t kLongestInterruption = 128 << 20;
  File file(path);
  const std::uint64_t first = file.size() - std::min(file.size(), kLongestInterruption);
  std::uint64_t limit = endLimit(file);
  for (int i = 0; i < kMostEnds; ++i) {
    const auto position = findEnd(file, first, limit);
    if (!position) break;
    const std::string bytes = file.read(*position, kEndSize);
    const End end = endAt(file, Bytes(bytes), *position);
    if (auto records = recordsOf(file, end); records && records->size() == count) {
      const std::uint64_t whole = *position + kEndSize + Bytes(bytes).u16(20);
      const std::uint64_t unused =
          unusedBefore(file, end, *records) + file.size() - std::min(file.size(), whole);
      return CentralDirectory{*std::move(records), unused};
    }
    limit = *position;
  }
  return std::nullopt;
}

bool isSplitArchive(const std::filesystem::path& path) {
  File file(path);
  const auto position = findEnd(file, tailStart(file), endLimit(file));
  if (!position) return Bytes(file.read(0, 4)).u32(0) == kSplitSignature;
  const std::uint16_t disk = Bytes(file.read(*position, kEndSize)).u16(4);
  return disk != 0 && disk != 0xFFFF;
}
