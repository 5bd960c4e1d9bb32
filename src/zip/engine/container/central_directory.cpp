// An end record names the size and the offset of its directory. It is no proof: an archive may hold
// another one as a stored entry, bytes may be missing or damaged, and in an archive with a prefix,
// such as a self-extracting program, offsets count from the end of the prefix:
//
//   | prefix | local header | data | ... | central directory | end record | comment |
//            ^ base                      ^ base + offset     ^ end
//
// A directory that is taken for the right one by mistake would hide entries, and a writer would
// destroy them. So only the last end record of the file counts, as in other programs, or one that
// only an interrupted append follows (interrupted_append.h), and its directory is used only if
//
// - it consists of exactly as many records as the end record says, in exactly as many bytes;
// - it directly precedes the end record, or is where the offset says without a prefix (an append
//   that was killed while it copied the directory);
// - with a prefix, or with bytes between directory and end record, the first entry is where its
//   record says;
// - with a prefix, the archive is not an entry of another one whose own end record is lost.

#include "zip/engine/container/central_directory.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/large_memory.h"
#include "zip/engine/container/enclosing_archive.h"
#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_name.h"
#include "zip/engine/container/extra_field.h"
#include "zip/engine/container/local_header.h"
#include "zip/engine/container/record_walk.h"
#include "zip/engine/reading/interrupted_append.h"

namespace zip_engine {
namespace {

// Bytes of a directory that are read before the records in them are checked, so that a false size
// costs no more memory than the records that are there.
constexpr std::size_t kReadStep = 1 << 20;

// Positions in a directory are counted with 32 bits.
constexpr std::uint64_t kLargestDirectory = 0xFFFFFFF0;

// Reports whether the bytes from an offset on are nothing, or the digital signature of a directory.
bool endsDirectory(const Bytes& blob, std::size_t at) {
  constexpr std::size_t kHeader = 6;
  const std::size_t size = blob.size() - at;
  return size == 0 || (size >= kHeader && load32(blob.data() + at) == kSignatureSignature &&
                       load16(blob.data() + at + 4) == size - kHeader);
}

// Reads the directory of `size` bytes at its position and counts its records. Returns false if it
// holds anything else but a digital signature at its end, which is left out of the blob.
bool readRecords(const ArchiveFile& file, std::uint64_t size, CentralDirectory& directory) {
  // Enough for any usual directory, so that it is not moved while it grows; memory for a false size
  // is reserved but not touched.
  constexpr std::uint64_t kUsual = 64 << 20;
  Bytes& blob = directory.blob;
  platform::reserveForFilling(blob, static_cast<std::size_t>(std::min(size, kUsual)));
  std::size_t checked = 0;
  RecordWalk walk;
  while (blob.size() < size) {
    // The rest may be the beginning of a record, which has fewer bytes than a step.
    if (blob.size() - checked >= kReadStep) return false;
    const std::size_t start = blob.size();
    const std::size_t step =
        static_cast<std::size_t>(std::min<std::uint64_t>(size - start, kReadStep));
    blob.resize(start + step);
    if (!file.readAt(directory.position + start, blob.data() + start, step)) return false;
    while (const std::size_t length = walk.take(blob.data() + checked, blob.size() - checked)) {
      checked += length;
    }
  }
  if (!endsDirectory(blob, checked)) return false;
  blob.resize(checked);
  directory.entryCount = walk.count();
  directory.isInOrder = walk.isInOrder();
  return true;
}

bool firstEntryIsInPlace(const ArchiveFile& file, const CentralDirectory& directory) {
  const CentralRecord record = recordAt(directory, 0);
  if (record.localOffset > directory.position - directory.base) return false;
  const std::uint64_t position = directory.base + record.localOffset;
  Bytes bytes(kLocalSize);
  if (!file.readAt(position, bytes.data(), bytes.size())) return false;
  bytes.resize(LocalHeader{bytes.data()}.size());
  if (!file.readAt(position, bytes.data(), bytes.size())) return false;
  const LocalHeader header{bytes.data()};
  return header.isValid() && isSameName(header.name(), record.name());
}

// Reads the directory at a position; offsets count from `base`. Returns false if it is not exactly
// as the end record says.
bool readDirectory(const ArchiveFile& file, const EndRecord& end, std::uint64_t position,
                   std::uint64_t base, CentralDirectory& directory) {
  directory = {};
  directory.position = position;
  directory.base = base;
  directory.end = end.end;
  return readRecords(file, end.directorySize, directory) && end.hasCount(directory.entryCount);
}

// Reads the directory that precedes the end records. Some programs write zip64 records that no
// value needs between the two. Returns false if it is not there; then its position is the one that
// it would have without them.
bool readPreceding(const ArchiveFile& file, const EndRecord& end, CentralDirectory& directory) {
  const auto readBefore = [&](std::uint64_t directoryEnd) {
    directory = {};
    if (end.directorySize > std::min(directoryEnd, kLargestDirectory)) return false;
    const std::uint64_t position = directoryEnd - end.directorySize;
    return position >= end.directoryOffset &&
           readDirectory(file, end, position, position - end.directoryOffset, directory);
  };
  return (end.equalEnd64 && readBefore(*end.equalEnd64)) || readBefore(end.directoryEnd);
}

// Reads the directory that an end record refers to and proves it as described above.
bool proveDirectory(const ArchiveFile& file, const EndRecord& end, CentralDirectory& directory) {
  const bool precedes = readPreceding(file, end, directory);
  const std::uint64_t base = directory.base;
  if (precedes && base == 0) return true;
  if (precedes && (directory.entryCount == 0 || firstEntryIsInPlace(file, directory))) {
    return !mayBeEnclosed(file, base);
  }
  CentralDirectory copy;
  if (precedes) copy = std::move(directory);
  return base != 0 && readDirectory(file, end, end.directoryOffset, 0, directory) &&
         directory.entryCount != 0 && firstEntryIsInPlace(file, directory) &&
         (!precedes || directory.blob == copy.blob);
}

}  // namespace

bool isRecordAt(const CentralDirectory& directory, std::size_t offset) {
  return recordSize(directory.blob.data() + offset, directory.blob.size() - offset) != 0;
}

CentralRecord recordAt(const CentralDirectory& directory, std::size_t offset) {
  CentralRecord record{.bytes = directory.blob.data() + offset};
  record.compressedSize = load32(record.bytes + 20);
  record.uncompressedSize = load32(record.bytes + 24);
  record.localOffset = load32(record.bytes + 42);
  if (record.uncompressedSize == kSaturated32 || record.compressedSize == kSaturated32 ||
      record.localOffset == kSaturated32) {
    readZip64(record.extra(), record.extraLength(),
              {&record.uncompressedSize, &record.compressedSize, &record.localOffset});
  }
  return record;
}

bool readCentralDirectory(const ArchiveFile& file, CentralDirectory& directory) {
  FilePiece tail;
  std::optional<EndRecord> end = readLastEndRecord(file, tail);
  const bool proved = end && proveDirectory(file, *end, directory);
  if (proved) directory.comment = std::move(end->comment);
  if (proved && !lacksSector(directory)) return true;
  CentralDirectory before;
  const auto prove = [&](const EndRecord& candidate, CentralDirectory& result) {
    return proveDirectory(file, candidate, result);
  };
  if (!readInterruptedAppend(file, tail, prove, before)) return proved;
  directory = std::move(before);
  return true;
}

}  // namespace zip_engine
