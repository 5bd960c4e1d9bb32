#include "zip/engine/writing/entry_copy.h"

#include <algorithm>

#include "zip/engine/container/extra_field.h"
#include "zip/engine/reading/reader.h"
#include "zip/engine/writing/writer.h"

namespace zip_engine {
namespace {

// Copies stored bytes unchanged.
int copyBytes(ZipReader& from, std::uint64_t position, std::uint64_t size, Transaction& to,
              const std::function<bool(std::uint64_t)>& advance) {
  constexpr std::uint64_t kBlock = 1 << 20;
  while (size > 0) {
    const std::size_t count = static_cast<std::size_t>(std::min(size, kBlock));
    Bytes& buffer = to.buffer();
    const std::size_t start = buffer.size();
    buffer.resize(start + count);
    if (!readBytes(from, position, buffer.data() + start, count)) return ZipStatusDamagedSource;
    if (!to.flushIfLarge()) return kFailure;
    if (!advance(count)) return ZipStatusCancelled;
    position += count;
    size -= count;
  }
  return kSuccess;
}

}  // namespace

EntryRecord recordOf(const CentralRecord& central, const LocalEntry& local) {
  return {.versionMadeBy = central.versionMadeBy(),
          .versionNeeded = central.versionNeeded(),
          .flags = central.flags(),
          .method = central.method(),
          .dosDate = central.dosDate(),
          .crc = central.crc(),
          .compressedSize = central.compressedSize,
          .uncompressedSize = central.uncompressedSize,
          .hasZip64 = needsZip64(central.compressedSize, central.uncompressedSize),
          .internalAttributes = central.internalAttributes(),
          .externalAttributes = central.externalAttributes(),
          .name = std::string(central.name()),
          .localExtra = withoutZip64(local.extra(), local.extraSize()),
          .centralExtra = withoutZip64(central.extra(), central.extraLength()),
          .comment = {reinterpret_cast<const char*>(central.comment()), central.commentLength()}};
}

int copyEntry(Transaction& archive, EntryRecord& record, ZipReader& from,
              std::uint64_t dataPosition, const std::function<bool(std::uint64_t)>& advance) {
  // The password of an encrypted entry with a descriptor is checked against its time, so it keeps
  // its descriptor. All others get their sizes into the local header.
  const bool descriptor =
      (record.flags & kFlagDescriptor) != 0 && (record.flags & kFlagEncrypted) != 0;
  EntryRecord local = record;
  if (descriptor) {
    local.crc = 0;
    local.compressedSize = local.uncompressedSize = 0;
  } else {
    record.flags &= static_cast<std::uint16_t>(~kFlagDescriptor);
    local.flags = record.flags;
  }
  appendLocalHeader(archive.buffer(), local);
  const int status = copyBytes(from, dataPosition, record.compressedSize, archive, advance);
  if (status != kSuccess) return status;
  if (descriptor) {
    appendDescriptor(archive.buffer(), record);
  }
  return archive.flushIfLarge() ? kSuccess : kFailure;
}

}  // namespace zip_engine
