#include "zip/engine/new_entry.h"

#include <random>
#include <utility>

#include "zip/engine/deflate_blocks.h"

namespace zip_engine {
namespace {

// Plain data up to this size is deflated in one piece.
constexpr std::size_t kGatherLimit = 4 << 20;

// A part that deflate cannot shrink grows by five bytes for each 64 KB. The header of its entry may
// precede it.
constexpr std::size_t kPartOverhead = 64 << 10;

// A part cannot refer to the bytes of the part before. This level makes up for that: the whole is
// no larger than one stream of zlib's default level.
constexpr int kPartLevel = 7;

}  // namespace

NewEntry::NewEntry(Transaction& archive, SamplingDeflater& deflater, EntryRecord record,
                   const NewEntryOptions& options)
    : archive_(archive),
      deflater_(deflater),
      record_(std::move(record)),
      options_(options),
      start_(archive.position()) {
  if (options_.raw) return;
  if (options_.password != nullptr) {
    cipher_.emplace(options_.password);
    record_.flags |= kFlagEncrypted;
  }
  if (cipher_ || record_.method == ZipMethodDeflate) record_.versionNeeded = kVersionDeflate;
}

// Writes the local header, whose sizes are patched at the end, and the encryption header.
bool NewEntry::beginData() {
  begun_ = true;
  appendLocalHeader(archive_.buffer(), record_);
  if (!cipher_) return true;
  unsigned char header[kEncryptionHeaderSize];
  std::random_device random;
  for (unsigned char& byte : header) byte = static_cast<unsigned char>(random());
  // A reader recognizes a wrong password by the last byte.
  header[kEncryptionHeaderSize - 1] = static_cast<unsigned char>(options_.expectedCrc >> 24);
  cipher_->encrypt(header, sizeof(header));
  stored_ += sizeof(header);
  return archive_.append(header, sizeof(header));
}

bool NewEntry::store(const unsigned char* bytes, std::size_t size) {
  Bytes& buffer = archive_.buffer();
  buffer.insert(buffer.end(), bytes, bytes + size);
  return stored(size);
}

// Deflates the gathered bytes as an independent part of the entry's stream, so that no more than
// one part is ever in memory.
bool NewEntry::deflatePart(bool last) {
  if (!begun_ && !beginData()) return false;
  Bytes& buffer = archive_.bufferForPart(kGatherLimit + kPartOverhead);
  const std::size_t start = buffer.size();
  const int level = options_.level == ZipLevelDefault ? kPartLevel : options_.level;
  const bool smaller = deflater_.appendSmaller(buffer, gathered_.data(), gathered_.size(), level);
  if (!smaller) appendStoredBlocks(buffer, gathered_.data(), gathered_.size());
  if (smaller && !last && !continueStream(buffer, start)) return false;
  if (!smaller && last) appendLastBlock(buffer);
  gathered_.clear();
  return stored(buffer.size() - start);
}

// Counts and encrypts the last `size` bytes of the archive's buffer.
bool NewEntry::stored(std::size_t size) {
  stored_ += size;
  if (stored_ >= kSaturated32) return false;
  Bytes& buffer = archive_.buffer();
  if (cipher_) cipher_->encrypt(buffer.data() + (buffer.size() - size), size);
  return archive_.flushIfLarge();
}

bool NewEntry::write(const unsigned char* data, std::size_t size) {
  plain_ += size;
  if (plain_ >= kSaturated32) return false;
  if (options_.raw || record_.method == ZipMethodStored) {
    if (!options_.raw) crc_ = crc32(crc_, data, size);
    return (begun_ || beginData()) && store(data, size);
  }
  crc_ = crc32(crc_, data, size);
  // Data that come in blocks get all their memory in one allocation, so that no smaller one is left
  // in the heap.
  if (!gathered_.empty()) gathered_.reserve(kGatherLimit);
  while (gathered_.size() + size > kGatherLimit) {
    const std::size_t count = kGatherLimit - gathered_.size();
    gathered_.insert(gathered_.end(), data, data + count);
    if (!deflatePart(false)) return false;
    data += count;
    size -= count;
  }
  gathered_.insert(gathered_.end(), data, data + size);
  return true;
}

bool NewEntry::finish() {
  if (options_.raw || (cipher_ && crc_ != options_.expectedCrc)) return false;
  record_.crc = crc_;
  record_.uncompressedSize = static_cast<std::uint32_t>(plain_);
  if (record_.method == ZipMethodDeflate) {
    return begun_ ? deflatePart(true) && patchHeader() : finishGathered();
  }
  return (begun_ || beginData()) && patchHeader();
}

bool NewEntry::finishRaw(std::uint32_t uncompressedSize, std::uint32_t crc) {
  if (!options_.raw || (!begun_ && !beginData())) return false;
  record_.crc = crc;
  record_.uncompressedSize = uncompressedSize;
  return patchHeader();
}

// All plain data are in memory: deflates them after the header, or stores them if deflate does not
// make them smaller.
bool NewEntry::finishGathered() {
  if (!beginData()) return false;
  Bytes& buffer = archive_.buffer();
  const std::size_t dataStart = buffer.size();
  if (deflater_.appendSmaller(buffer, gathered_.data(), gathered_.size(), options_.level)) {
    const std::size_t size = buffer.size() - dataStart;
    if (!stored(size)) return false;
  } else {
    record_.method = ZipMethodStored;
    if (!cipher_) record_.versionNeeded = kVersionStored;
    if (!store(gathered_.data(), gathered_.size())) return false;
  }
  return patchHeader();
}

bool NewEntry::patchHeader() {
  record_.compressedSize = static_cast<std::uint32_t>(stored_);
  Bytes header;
  appendLocalHeader(header, record_);
  return archive_.patch(start_, header.data(), kLocalSize);
}

}  // namespace zip_engine
