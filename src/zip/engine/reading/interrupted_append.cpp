#include "zip/engine/reading/interrupted_append.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace zip_engine {
namespace {

// A disk writes a sector entirely or not at all. One that was not written reads as zeros.
constexpr std::size_t kSector = 512;

// The end records that an append can leave after that of the archive, and one to spare.
constexpr int kMostCandidates = 4;

constexpr std::size_t kBlock = 1 << 20;

// Reports whether the bytes, at most those of a sector, are zero.
bool isZero(const unsigned char* bytes, std::size_t size) {
  static constexpr unsigned char kZeros[kSector] = {};
  return std::memcmp(bytes, kZeros, size) == 0;
}

// Reports whether one of the whole sectors in the bytes, which are at `position`, is zero.
bool hasZeroSector(const Bytes& bytes, std::uint64_t position) {
  for (std::size_t at = (kSector - position % kSector) % kSector; at + kSector <= bytes.size();
       at += kSector) {
    if (isZero(bytes.data() + at, kSector)) return true;
  }
  return false;
}

// The bytes that an append writes at the end of a file of a certain size.
class Backup {
 public:
  Backup(const CentralDirectory& directory, std::uint64_t size) : directory_(directory.blob) {
    bool withEnd64 = false;
    const auto endRecordFor = [&](std::uint64_t position) {
      Bytes bytes;
      appendEndRecords(bytes, position - directory.base, directory.blob.size(),
                       directory.entryCount, directory.comment, withEnd64);
      return bytes;
    };
    const auto place = [&] {
      first_ = endRecordFor(directory.position);
      position_ = size - std::min(size, std::uint64_t{directory_.size()} + first_.size());
    };
    place();
    withEnd64 = needsEnd64(position_ - directory.base, directory.blob.size(), directory.entryCount);
    place();
    final_ = endRecordFor(position_);
  }

  // Reports whether the bytes of a sector can be at a position.
  bool explains(const unsigned char* bytes, std::size_t size, std::uint64_t position) const {
    return isZero(bytes, size) || isPartOf(first_, bytes, size, position) ||
           isPartOf(final_, bytes, size, position);
  }

 private:
  bool isPartOf(const Bytes& endRecord, const unsigned char* bytes, std::size_t size,
                std::uint64_t position) const {
    for (std::size_t i = 0; i < size; ++i) {
      unsigned char expected = 0;
      if (position + i >= position_) {
        const std::size_t at = static_cast<std::size_t>(position + i - position_);
        const std::size_t atEnd = at - std::min(at, directory_.size());
        if (atEnd >= endRecord.size()) return false;
        expected = at < directory_.size() ? directory_[at] : endRecord[atEnd];
      }
      if (bytes[i] != expected) return false;
    }
    return true;
  }

  const Bytes& directory_;
  std::uint64_t position_ = 0;  // absolute
  Bytes first_;                 // refers to the directory that is there already
  Bytes final_;                 // refers to the copy
};

// Reports whether everything from a position on is left by an append.
bool isBackup(const ArchiveFile& file, std::uint64_t position, std::uint64_t size,
              const CentralDirectory& directory) {
  const Backup backup(directory, size);
  Bytes block;
  while (position < size) {
    // Whole sectors, but for the first and the last one.
    const std::uint64_t blockEnd = std::min<std::uint64_t>(size, (position / kBlock + 1) * kBlock);
    block.resize(static_cast<std::size_t>(blockEnd - position));
    if (!file.readAt(position, block.data(), block.size())) return false;
    const unsigned char* bytes = block.data();
    while (position < blockEnd) {
      const std::uint64_t sectorEnd = std::min(blockEnd, (position / kSector + 1) * kSector);
      const std::size_t count = static_cast<std::size_t>(sectorEnd - position);
      if (!backup.explains(bytes, count, position)) return false;
      bytes += count;
      position = sectorEnd;
    }
  }
  return true;
}

// What passes for a comment may be the rest of an archive that holds this one as an entry. Unlike
// for mayHoldEndRecord(), the signature alone counts: the zeros after the comment can complete it.
bool holdsEndRecord(std::string_view comment) {
  return comment.find(kEndSignatureText) != std::string_view::npos;
}

// The positions of end records in a part of the file, in ascending order.
std::optional<std::vector<std::uint64_t>> findEndRecords(const ArchiveFile& file,
                                                         std::uint64_t begin, std::uint64_t end) {
  std::string block(static_cast<std::size_t>(end - begin), '\0');
  if (!file.readAt(begin, block.data(), block.size())) return std::nullopt;
  std::vector<std::uint64_t> found;
  for (std::size_t at = block.find(kEndSignatureText); at != std::string::npos;
       at = block.find(kEndSignatureText, at + 1)) {
    found.push_back(begin + at);
  }
  return found;
}

bool readAt(const ArchiveFile& file, std::uint64_t position, std::uint64_t size,
            const ReadDirectory& readDirectory, CentralDirectory& directory) {
  const std::uint64_t begin = position - std::min<std::uint64_t>(position, kLocator64Size);
  FilePiece piece{.position = begin, .bytes = {}};
  piece.bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size - begin, kLongestTail)));
  const std::size_t at = static_cast<std::size_t>(position - begin);
  EndRecord end;
  if (piece.bytes.size() < at + kEndSize ||
      !file.readAt(begin, piece.bytes.data(), piece.bytes.size()) ||
      !readEndRecord(file, piece, at, end) || holdsEndRecord(end.comment) ||
      !readDirectory(end, directory) || lacksSector(directory)) {
    return false;
  }
  directory.comment = std::move(end.comment);
  return isBackup(file, position + kEndSize + directory.comment.size(), size, directory);
}

}  // namespace

bool lacksSector(const CentralDirectory& directory) {
  return hasZeroSector(directory.blob, directory.position);
}

bool readInterruptedAppend(const ArchiveFile& file, const FilePiece& tail,
                           const ReadDirectory& readDirectory, CentralDirectory& directory) {
  // Without a hole near the end, and without an end record that refers to one, nothing is missing.
  if (!findLastEndRecord(tail) && !hasZeroSector(tail.bytes, tail.position)) return false;
  const std::uint64_t size = tail.position + tail.bytes.size();
  const std::uint64_t first = size - std::min(size, kLongestInterruption);
  int candidates = 0;
  for (std::uint64_t end = size; end > first;) {
    const std::uint64_t begin = end - std::min<std::uint64_t>(end - first, kBlock);
    // A signature that begins in this block may extend into the one read before.
    const auto found =
        findEndRecords(file, begin, std::min(size, end + kEndSignatureText.size() - 1));
    if (!found) return false;
    for (auto position = found->rbegin(); position != found->rend(); ++position) {
      if (++candidates > kMostCandidates) return false;
      if (readAt(file, *position, size, readDirectory, directory)) return true;
    }
    end = begin;
  }
  return false;
}

}  // namespace zip_engine
