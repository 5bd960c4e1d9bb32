// Recognizing the parts of an archive of several files, which is not read.

#include <algorithm>

#include "zip/engine.h"
#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/end_record.h"

using namespace zip_engine;

namespace {

// The signature that the first part begins with.
constexpr std::uint32_t kSplitSignature = 0x08074b50;

}  // namespace

bool ZipIsPartOfSplitArchive(const char* path) {
  ArchiveFile file;
  if (!file.open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING)) {
    return false;
  }
  const std::uint64_t size = file.size().value_or(0);
  FilePiece tail;
  tail.bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size, kLongestTail)));
  tail.position = size - tail.bytes.size();
  if (!file.readAt(tail.position, tail.bytes.data(), tail.bytes.size())) return false;
  if (const std::optional<std::size_t> at = findLastEndRecord(tail)) {
    const std::uint16_t disk = load16(tail.bytes.data() + *at + 4);
    return disk != 0 && disk != kSaturated16;
  }
  unsigned char start[4];
  return file.readAt(0, start, sizeof(start)) && load32(start) == kSplitSignature;
}
