#include "zip/engine/new_entry.h"

#include <random>
#include <utility>

namespace zip_engine {
namespace {

// Plain data up to this size is deflated in one piece.
constexpr std::size_t kGatherLimit = 4 << 20;

constexpr std::uint16_t kVersionDeflate = 20;

}  // namespace

NewEntry::NewEntry(Transaction& archive, BufferDeflater& deflater, EntryRecord record,
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

// Writes the local header, whose sizes may be mended later, and what stands in
// front of encrypted data.
bool NewEntry::beginData() {
  begun_ = true;
  appendLocalHeader(archive_.buffer(), record_);
  if (!cipher_) return true;
  unsigned char header[kEncryptionHeaderSize];
  static thread_local std::random_device random;
  for (unsigned char& byte : header) byte = static_cast<unsigned char>(random());
  // By its last byte a reader tells a wrong password.
  header[kEncryptionHeaderSize - 1] = static_cast<unsigned char>(options_.expectedCrc >> 24);
  cipher_->encrypt(header, sizeof(header));
  stored_ += sizeof(header);
  return archive_.append(header, sizeof(header));
}

bool NewEntry::store(const unsigned char* bytes, std::size_t size) {
  stored_ += size;
  if (stored_ >= kSaturated32) return false;
  Bytes& buffer = archive_.buffer();
  buffer.insert(buffer.end(), bytes, bytes + size);
  if (cipher_) cipher_->encrypt(buffer.data() + (buffer.size() - size), size);
  return archive_.flushIfLarge();
}

bool NewEntry::stream(const unsigned char* data, std::size_t size, bool last) {
  if (!stream_) stream_ = std::make_unique<StreamDeflater>(options_.level);
  return stream_->write(data, size, last, [this](const unsigned char* bytes, std::size_t count) {
    return store(bytes, count);
  });
}

bool NewEntry::write(const unsigned char* data, std::size_t size) {
  plain_ += size;
  if (plain_ >= kSaturated32) return false;
  if (options_.raw || record_.method == ZipMethodStored) {
    if (!options_.raw) crc_ = crc32(crc_, data, size);
    return (begun_ || beginData()) && store(data, size);
  }
  crc_ = crc32(crc_, data, size);
  if (!stream_ && gathered_.size() + size <= kGatherLimit) {
    gathered_.insert(gathered_.end(), data, data + size);
    return true;
  }
  if (!stream_) {
    if (!beginData() || !stream(gathered_.data(), gathered_.size(), false)) return false;
    gathered_ = {};
  }
  return stream(data, size, false);
}

bool NewEntry::finish() {
  if (options_.raw || (cipher_ && crc_ != options_.expectedCrc)) return false;
  record_.crc = crc_;
  record_.uncompressedSize = static_cast<std::uint32_t>(plain_);
  if (!stream_ && record_.method == ZipMethodDeflate) return finishGathered();
  if (!begun_ && !beginData()) return false;
  return (!stream_ || stream(nullptr, 0, true)) && patchHeader();
}

bool NewEntry::finishRaw(std::uint32_t uncompressedSize, std::uint32_t crc) {
  if (!options_.raw || (!begun_ && !beginData())) return false;
  record_.crc = crc;
  record_.uncompressedSize = uncompressedSize;
  return patchHeader();
}

// All plain data is in memory: deflates it behind the header, or stores it if
// that is no gain.
bool NewEntry::finishGathered() {
  if (!beginData()) return false;
  Bytes& buffer = archive_.buffer();
  const std::size_t dataStart = buffer.size();
  if (deflater_.appendSmaller(buffer, gathered_.data(), gathered_.size(), options_.level)) {
    const std::size_t size = buffer.size() - dataStart;
    if (cipher_) cipher_->encrypt(buffer.data() + dataStart, size);
    stored_ += size;
  } else {
    record_.method = ZipMethodStored;
    if (!cipher_) record_.versionNeeded = EntryRecord{}.versionNeeded;
    if (!store(gathered_.data(), gathered_.size())) return false;
  }
  return patchHeader() && archive_.flushIfLarge();
}

bool NewEntry::patchHeader() {
  record_.compressedSize = static_cast<std::uint32_t>(stored_);
  Bytes header;
  appendLocalHeader(header, record_);
  return archive_.patch(start_, header.data(), kLocalSize);
}

}  // namespace zip_engine
