#include "zip/engine/container/local_entry.h"

#include <algorithm>

#include "zip/engine/container/entry_name.h"
#include "zip/engine/container/extra_field.h"

namespace zip_engine {
namespace {

// Data that is read with the header: all of a small entry.
constexpr std::uint64_t kDataBlock = 64 << 10;

// The length of the extra field is known only after the header is read.
constexpr std::uint64_t kUsualExtra = 64;

bool belongsTo(const LocalHeader& header, const CentralRecord& record) {
  return header.isValid() && header.method() == record.method() &&
         ((header.flags() ^ record.flags()) & kFlagEncrypted) == 0;
}

}  // namespace

bool LocalEntry::read(const ArchiveFile& file, const CentralDirectory& directory,
                      const CentralRecord& record) {
  std::uint64_t limit = 0;
  if (!map_.locate(directory, record, start_, limit)) return false;
  if (start_ > limit || limit - start_ < kLocalSize) return false;
  const std::uint64_t available = limit - start_;
  const std::uint64_t usual =
      kLocalSize + record.nameLength() + kUsualExtra + std::min(record.compressedSize, kDataBlock);
  head_.resize(static_cast<std::size_t>(std::min(available, usual)));
  if (!readBytes(file, start_, head_.data(), head_.size())) return false;
  if (!belongsTo(header(), record)) return false;
  const std::size_t size = header().size();
  return size <= available && record.compressedSize <= available - size && extendHead(file, size) &&
         hasNameOf(header(), record);
}

// Reads the rest of a header of `size` bytes that is longer than usual.
bool LocalEntry::extendHead(const ArchiveFile& file, std::size_t size) {
  const std::size_t known = head_.size();
  if (known >= size) return true;
  head_.resize(size);
  return file.readAt(start_ + known, head_.data() + known, size - known);
}

bool LocalEntry::hasSumsOf(const CentralRecord& record) const {
  const bool hasDescriptor = (header().flags() & kFlagDescriptor) != 0;
  std::uint64_t compressed = header().compressedSize();
  std::uint64_t uncompressed = header().uncompressedSize();
  if (compressed == kSaturated32 || uncompressed == kSaturated32) {
    readZip64(extra(), extraSize(), {&uncompressed, &compressed});
  }
  const auto agrees = [&](std::uint64_t local, std::uint64_t central) {
    return local == central || (hasDescriptor && local == 0);
  };
  // Where the CRC is not known yet, `zip` writes the time, which the password is checked against.
  const bool hasTime = hasDescriptor && (record.flags() & kFlagEncrypted) != 0 &&
                       header().crc() == std::uint32_t{record.time()} << 16;
  return (hasTime || agrees(header().crc(), record.crc())) &&
         agrees(compressed, record.compressedSize) && agrees(uncompressed, record.uncompressedSize);
}

}  // namespace zip_engine
