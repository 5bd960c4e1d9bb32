#include "zip/engine/container/enclosing_archive.h"

#include <algorithm>

#include "zip/engine/container/extra_field.h"
#include "zip/engine/container/local_header.h"
#include "zip/engine/reading/read_ahead.h"

namespace zip_engine {
namespace {

// Local headers that are followed from the start of the file.
constexpr int kMostHeaders = 1 << 16;

// The longest header has 128 KB. The rest is for the block header of a deflate stream whose blocks
// are stored.
constexpr std::uint64_t kWindow = 192 << 10;

// Returns the size of an entry's data. It is kNoSize if the header, which is whole, does not have
// it.
std::uint64_t dataSizeOf(const LocalHeader& header) {
  std::uint64_t compressed = header.compressedSize();
  std::uint64_t uncompressed = header.uncompressedSize();
  if (compressed == kSaturated32) {
    readZip64(header.extra(), header.extraLength(), {&uncompressed, &compressed});
  }
  const bool isLater = (header.flags() & kFlagDescriptor) != 0 && compressed == 0;
  return isLater || compressed == kSaturated32 ? kNoSize : compressed;
}

// Reports whether the data of an entry includes the position. All bytes before that can be read.
bool includes(const LocalHeader& header, std::uint64_t start, std::uint64_t position) {
  const std::uint64_t data = start + header.size();
  return data <= position && position - data < dataSizeOf(header);
}

// Follows the entries of an archive that begins with the file. Returns false only if its directory
// is reached before the base: then another archive follows it.
bool startsWithEnclosing(const ArchiveFile& file, std::uint64_t base) {
  ReadAhead readAhead;
  std::uint64_t position = 0;
  for (int count = 0; count < kMostHeaders; ++count) {
    unsigned char bytes[kLocalSize];
    if (base - position < sizeof(bytes)) return count != 0;
    if (!readAhead.readAt(file, position, bytes, sizeof(bytes))) return true;
    if (load32(bytes) != kLocalSignature) return count != 0 && load32(bytes) != kCentralSignature;
    Bytes whole(LocalHeader{bytes}.size());
    if (whole.size() > base - position) return true;
    if (!readAhead.readAt(file, position, whole.data(), whole.size())) return true;
    position += whole.size();
    const std::uint64_t size = dataSizeOf({whole.data()});
    if (size > base - position) return true;
    position += size;
  }
  return true;
}

// A prefix that is a program may hold the signature of a local header by chance, but not with
// values that make sense.
bool isPlausible(const LocalHeader& header) {
  constexpr unsigned char kLatestVersion = 63;
  constexpr std::uint16_t kLatestMethod = 99;
  return header.isValid() && header.versionNeeded() <= kLatestVersion &&
         header.method() <= kLatestMethod && header.nameLength() != 0;
}

// Searches the bytes before the base for a local header whose data includes it.
bool followsHeader(const ArchiveFile& file, std::uint64_t base) {
  Bytes window(static_cast<std::size_t>(std::min(base, kWindow)));
  if (!file.readAt(base - window.size(), window.data(), window.size())) return true;
  for (std::size_t at = 0; at + kLocalSize <= window.size(); ++at) {
    const LocalHeader header{window.data() + at};
    if (isPlausible(header) && includes(header, base - window.size() + at, base)) return true;
  }
  return false;
}

}  // namespace

bool mayBeEnclosed(const ArchiveFile& file, std::uint64_t base) {
  return startsWithEnclosing(file, base) || followsHeader(file, base);
}

}  // namespace zip_engine
