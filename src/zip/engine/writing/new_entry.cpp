#include "zip/engine/writing/new_entry.h"

#include <algorithm>
#include <utility>

#include "platform/random_bytes.h"
#include "zip/engine/codec/methods.h"

namespace zip_engine {
namespace {

// The most plain data that is encoded in one piece, and needs no zip64 block.
constexpr std::size_t kLargestWhole = ZipLargestPrepared;

// A part that deflate cannot shrink grows by five bytes for each 64 KB. The header of its entry may
// precede it.
constexpr std::size_t kPartOverhead = 64 << 10;

// The parts of methods whose encoder keeps its window between them, so that small ones cost nothing.
constexpr std::size_t kEncoderPart = 512 << 10;

// Gathered bytes are checked for the end of a part after so many at most, which is what a part leaves.
constexpr std::size_t kGatherStep = 64 << 10;

// The default level is a faster one for data in one piece than for parts.
std::size_t wholeSizeOf(int level) {
  return level == ZipLevelDefault ? kLargestWhole : PartEnd(level).largest();
}

}  // namespace

Encoder* Encoders::of(const Method& method) {
  if (method_ != &method) {
    encoder_ = method.makeEncoder();
    method_ = &method;
  }
  return encoder_.get();
}

NewEntry::NewEntry(EntryOutput& output, Encoders& encoders, EntryRecord record,
                   const NewEntryOptions& options)
    : output_(output),
      deflater_(encoders.deflater),
      record_(std::move(record)),
      start_(output.position()),
      level_(options.level),
      partEnd_(options.level),
      partSize_(partEnd_.largest()),
      wholeSize_(options.size > kLargestWhole ? partSize_ : wholeSizeOf(options.level)),
      raw_(options.raw),
      expectedCrc_(options.expectedCrc),
      method_(raw_ ? nullptr : findMethod(record_.method)) {
  if (raw_) return;
  if (method_->makeEncoder != nullptr) {
    encoder_ = encoders.of(*method_);
    failed_ = encoder_ == nullptr;
    partSize_ = kEncoderPart;
    if (options.size > kLargestWhole) wholeSize_ = partSize_;
  }
  if (options.password != nullptr) beginEncryption(options);
  setMethod(*method_);
}

// Makes the keys and the header of encrypted data. The entry fails if there are no random bytes.
void NewEntry::beginEncryption(const NewEntryOptions& options) {
  record_.flags |= kFlagEncrypted;
  const AesParameters parameters{.keySize = 32, .method = method_->number};
  Bytes& header = encryptionHeader_;
  header.resize(options.usesAes ? parameters.saltSize() : kEncryptionHeaderSize);
  failed_ = failed_ || !platform::fillRandom(header.data(), header.size());
  if (options.usesAes) {
    appendAesExtra(record_.localExtra, parameters);
    appendAesExtra(record_.centralExtra, parameters);
    aes_.emplace(options.password, parameters, header.data());
    header.insert(header.end(), aes_->verifier(), aes_->verifier() + kAesVerifierSize);
  } else {
    if (!options.knowsCrc) record_.flags |= kFlagDescriptor;
    // A reader recognizes a wrong password by the last byte: that of the CRC, or of the time.
    const std::uint32_t check = hasDescriptor() ? record_.dosDate << 16 : expectedCrc_;
    header.back() = static_cast<unsigned char>(check >> 24);
    cipher_.emplace(options.password);
    cipher_->encrypt(header.data(), header.size());
  }
}

// Sets the method of the content in the records.
void NewEntry::setMethod(const Method& method) {
  if (aes_) {
    record_.method = kMethodAes;
    record_.versionNeeded = std::max(kVersionAes, method.versionNeeded);
    // It is last in the field of AES entries, which is last in the extra field.
    for (Bytes* const extra : {&record_.localExtra, &record_.centralExtra}) {
      store16(extra->data() + extra->size() - 2, method.number);
    }
    return;
  }
  record_.method = method.number;
  const std::uint16_t needed = method.versionNeeded;
  record_.versionNeeded = cipher_ ? std::max(needed, kVersionDeflate) : needed;
}

void NewEntry::encrypt(unsigned char* bytes, std::size_t size) {
  if (cipher_) cipher_->encrypt(bytes, size);
  if (aes_) aes_->encrypt(bytes, size);
}

// Writes the local header, which is patched at the end, and the encryption header.
void NewEntry::beginData() {
  begun_ = true;
  Bytes& buffer = output_.buffer();
  appendLocalHeader(buffer, record_);
  buffer.insert(buffer.end(), encryptionHeader_.begin(), encryptionHeader_.end());
  stored_ = encryptionHeader_.size();
}

// Encodes the gathered bytes, so that no more than one part is ever in memory, or one for each worker.
bool NewEntry::encodePart(bool last) {
  const bool hasWorkers = encoder_ == nullptr && deflater_.workers() > 1;
  if (hasWorkers && !gatherPart(last)) return true;
  if (!begun_) {
    if (encoder_ != nullptr && !encoder_->begin(level_, std::nullopt)) return false;
    beginData();
  }
  if (hasWorkers) return deflateParts(last);
  Bytes& buffer = output_.bufferForPart(partSize_ + kPartOverhead);
  const std::size_t start = buffer.size();
  const bool isEncoded = encoder_ != nullptr ? encoder_->append(buffer, gathered_, last)
                                             : deflater_.append(buffer, gathered_, level_, last);
  if (!isEncoded) return false;
  gathered_.clear();
  return stored(buffer.size() - start);
}

// Keeps the gathered bytes as a part. Returns true if the parts are to be deflated.
bool NewEntry::gatherPart(bool last) {
  if (gatheredParts_ == parts_.size()) {
    parts_.emplace_back();
    parts_.back().deflated.reserve(partSize_ + kPartOverhead);
  }
  std::swap(parts_[gatheredParts_].plain, gathered_);
  gathered_.clear();
  ++gatheredParts_;
  return last || gatheredParts_ == deflater_.workers();
}

// Deflates the parts, and appends them in their order.
bool NewEntry::deflateParts(bool last) {
  const std::size_t count = std::exchange(gatheredParts_, 0);
  if (!deflater_.deflate(parts_, count, level_, last)) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const Bytes& deflated = parts_[i].deflated;
    Bytes& buffer = output_.bufferForPart(partSize_ + kPartOverhead);
    buffer.insert(buffer.end(), deflated.begin(), deflated.end());
    if (!stored(deflated.size())) return false;
  }
  return true;
}

// Counts and encrypts the last `size` bytes of the output's buffer.
bool NewEntry::stored(std::size_t size) {
  stored_ += size;
  if (isTooLarge()) return false;
  Bytes& buffer = output_.buffer();
  encrypt(buffer.data() + (buffer.size() - size), size);
  return output_.flushIfLarge();
}

bool NewEntry::write(const unsigned char* data, std::size_t size) {
  failed_ = failed_ || !add(data, size);
  return !failed_;
}

bool NewEntry::add(const unsigned char* data, std::size_t size) {
  plain_ += size;
  if (isTooLarge()) return false;
  if (!raw_) crc_ = crc32(crc_, data, size);
  return raw_ || method_->isStored() ? store(data, size) : gather(data, size);
}

// Writes bytes unchanged. Before the header, which they follow, it is found out whether it needs a
// zip64 block.
bool NewEntry::store(const unsigned char* data, std::size_t size) {
  if (!begun_ && record_.hasZip64 && gathered_.size() + size <= wholeSize_) {
    return gather(data, size);
  }
  if (!begun_) {
    beginData();
    const Bytes gathered = std::exchange(gathered_, {});
    if (!gathered.empty() && !store(gathered.data(), gathered.size())) return false;
  }
  Bytes& buffer = output_.buffer();
  buffer.insert(buffer.end(), data, data + size);
  return stored(size);
}

// Keeps the bytes, and encodes each part of them that is complete.
bool NewEntry::gather(const unsigned char* data, std::size_t size) {
  const bool hasHardParts = encoder_ == nullptr && method_->isDeflate();
  if (gathered_.empty()) gathered_.reserve(std::min(size, gatherLimit()));
  while (size > 0) {
    while (gathered_.size() >= gatherLimit()) {
      if (!encodeFirst(partSize_)) return false;
    }
    const std::size_t count = std::min({size, kGatherStep, gatherLimit() - gathered_.size()});
    // Data that come in blocks get all their memory in one allocation, so that no smaller one is left
    // in the heap.
    if (gathered_.capacity() - gathered_.size() < count) gathered_.reserve(gatherLimit());
    gathered_.insert(gathered_.end(), data, data + count);
    data += count;
    size -= count;
    while (hasHardParts) {
      const std::size_t end = partEnd_.find(gathered_.data(), gathered_.size());
      if (end == 0) break;
      if (!encodeFirst(end)) return false;
    }
  }
  return true;
}

// Encodes the first gathered bytes as a part, and keeps the others.
bool NewEntry::encodeFirst(std::size_t size) {
  partEnd_.begin();
  const auto end = gathered_.begin() + static_cast<std::ptrdiff_t>(size);
  const Bytes next(end, gathered_.end());
  gathered_.erase(end, gathered_.end());
  if (!encodePart(false)) return false;
  gathered_.insert(gathered_.end(), next.begin(), next.end());
  return true;
}

bool NewEntry::finish() {
  if (failed_ || raw_ || hasWrongCrc()) return false;
  record_.crc = aes_ ? 0 : crc_;
  record_.uncompressedSize = plain_;
  if (!begun_ && gatheredParts_ == 0) return finishGathered();
  return (method_->isStored() || encodePart(true)) && complete();
}

bool NewEntry::finishRaw(std::uint32_t uncompressedSize, std::uint32_t crc) {
  if (failed_ || !raw_) return false;
  if (!begun_) beginData();
  record_.crc = crc;
  record_.uncompressedSize = uncompressedSize;
  return patchHeader();
}

// All plain data are in memory: encodes them after the header, or stores them if that does not make
// them smaller.
bool NewEntry::finishGathered() {
  record_.hasZip64 = false;
  beginData();
  Bytes& buffer = output_.buffer();
  const std::size_t dataStart = buffer.size();
  if (method_->isStored() || !appendSmaller(buffer)) {
    setMethod(*findMethod(ZipMethodStored));
    buffer.resize(dataStart);
    buffer.insert(buffer.end(), gathered_.begin(), gathered_.end());
  }
  return stored(buffer.size() - dataStart) && complete();
}

// Appends the gathered data encoded. Returns false if the encoded bytes, whatever they are, cannot be
// used.
bool NewEntry::appendSmaller(Bytes& out) {
  if (encoder_ == nullptr) {
    return deflater_.own().appendSmaller(out, gathered_.data(), gathered_.size(), level_);
  }
  const std::size_t start = out.size();
  return encoder_->begin(level_, gathered_.size()) && encoder_->append(out, gathered_, true) &&
         out.size() - start < gathered_.size();
}

// Ends the stored bytes.
bool NewEntry::complete() {
  if (aes_) {
    unsigned char code[kAesCodeSize];
    aes_->writeCode(code);
    stored_ += sizeof(code);
    if (isTooLarge() || !output_.append(code, sizeof(code))) return false;
  }
  return patchHeader();
}

// The sizes and the CRC are in the local header, or else in the descriptor.
bool NewEntry::patchHeader() {
  record_.compressedSize = stored_;
  EntryRecord local = record_;
  if (hasDescriptor()) {
    local.crc = 0;
    local.compressedSize = local.uncompressedSize = 0;
  }
  Bytes header;
  appendLocalHeader(header, local);
  if (!output_.patch(start_, header.data(), header.size())) return false;
  if (!hasDescriptor()) return true;
  appendDescriptor(output_.buffer(), record_);
  return output_.flushIfLarge();
}

}  // namespace zip_engine
