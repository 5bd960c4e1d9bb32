#include "zip/engine/reading/unused_bytes.h"

#include <algorithm>
#include <optional>

#include "zip/engine/container/format.h"
#include "zip/engine/container/local_header.h"

namespace zip_engine {
namespace {

// Returns the record whose entry begins last, of a directory that has one.
CentralRecord lastEntry(const CentralDirectory& directory) {
  CentralRecord last = recordAt(directory, 0);
  for (std::size_t at = last.size(); at < directory.blob.size();) {
    const CentralRecord record = recordAt(directory, at);
    if (record.localOffset > last.localOffset) last = record;
    at += record.size();
  }
  return last;
}

std::uint64_t beforeDirectory(const ArchiveFile& file, const CentralDirectory& directory) {
  constexpr std::uint64_t kLongestDescriptor = 24;
  if (directory.blob.empty()) return 0;
  const CentralRecord last = lastEntry(directory);
  // The sums of a damaged archive may exceed 64 bits.
  if (last.localOffset > directory.position - directory.base) return 0;
  unsigned char bytes[kLocalSize];
  const std::uint64_t start = directory.base + last.localOffset;
  if (last.compressedSize > directory.position - start) return 0;
  if (!file.readAt(start, bytes, sizeof(bytes)) || load32(bytes) != kLocalSignature) return 0;
  const std::uint64_t used =
      start + LocalHeader{bytes}.size() + last.compressedSize + kLongestDescriptor;
  return directory.position - std::min(directory.position, used);
}

}  // namespace

std::uint64_t unusedBytes(const ArchiveFile& file, const CentralDirectory& directory) {
  const std::uint64_t size = file.size().value_or(0);
  return beforeDirectory(file, directory) + size - std::min(size, directory.end);
}

}  // namespace zip_engine
