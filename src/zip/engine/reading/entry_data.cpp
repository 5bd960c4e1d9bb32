#include "zip/engine/reading/entry_data.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "zip/engine.h"

namespace zip_engine {
namespace {

// Content up to this size is decoded in one call, however small the first read is.
constexpr std::uint64_t kSmall = 4 << 20;
// The most stored bytes of a deflated entry that one read of all its content inflates in one call.
// That is faster than inflating in pieces, but holds stored and plain bytes together.
constexpr std::uint64_t kLargestStored = 12 << 20;
constexpr std::size_t kInputBlock = 256 << 10;

}  // namespace

EntryData::EntryData(const ArchiveFile& file, const EntryLayout& layout, EntryBuffers& buffers)
    : file_(file),
      buffers_(buffers),
      layout_(layout),
      storedLeft_(layout.compressedSize),
      plainLeft_(layout.raw ? layout.compressedSize : layout.uncompressedSize) {
  if (layout.password != nullptr && !layout.raw && !layout.aes) cipher_.emplace(layout.password);
}

EntryData::~EntryData() = default;

void EntryData::prefetched(const unsigned char* bytes, std::size_t size) {
  ahead_.assign(bytes, bytes + std::min<std::uint64_t>(size, layout_.compressedSize));
}

bool EntryData::begin() {
  if (layout_.aes && !layout_.raw) return beginAes();
  if (!cipher_) return true;
  unsigned char header[kEncryptionHeaderSize];
  return readStored(header, sizeof(header)) && header[sizeof(header) - 1] == layout_.checkByte;
}

// Leaves the authentication code out of the stored bytes.
bool EntryData::beginAes() {
  const std::size_t headerSize = layout_.aes->headerSize();
  unsigned char header[kLongestAesHeader];
  if (storedLeft_ < headerSize + kAesCodeSize || !readStored(header, headerSize)) return false;
  layout_.compressedSize -= kAesCodeSize;
  storedLeft_ -= kAesCodeSize;
  aes_.emplace(layout_.password, *layout_.aes, header);
  const unsigned char* const verifier = header + layout_.aes->saltSize();
  return std::equal(verifier, verifier + kAesVerifierSize, aes_->verifier());
}

// Checks the authentication code, which follows the stored bytes. Those of an entry without content
// have not been read yet; most methods make a few bytes of it.
bool EntryData::isAuthentic() {
  while (layout_.uncompressedSize == 0 && storedLeft_ != 0) {
    if (!refill()) return false;
  }
  unsigned char code[kAesCodeSize];
  return storedLeft_ == 0 &&
         file_.readAt(layout_.position + layout_.compressedSize, code, sizeof(code)) &&
         aes_->isAuthentic(code);
}

int EntryData::read(unsigned char* buffer, std::uint32_t size) {
  const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(
      {size, plainLeft_, static_cast<std::uint64_t>(std::numeric_limits<int>::max())}));
  if (status_ == 0 && !readVerified(buffer, wanted) && status_ == 0) status_ = ZipStatusDamaged;
  return status_ != 0 ? status_ : static_cast<int>(wanted);
}

// Reads the next bytes and, with the last one, checks the complete content.
bool EntryData::readVerified(unsigned char* out, std::size_t size) {
  if (!readDecoded(out, size)) return false;
  if (!layout_.raw) crc_ = crc32(crc_, out, size);
  plainLeft_ -= size;
  if (plainLeft_ == 0 && !verified_) verified_ = layout_.raw || isWhole();
  return plainLeft_ != 0 || verified_;
}

bool EntryData::isWhole() {
  const bool checksCrc = !aes_ || layout_.aes->hasCrc;
  return (!checksCrc || crc_ == layout_.crc) && endsHere() && (!aes_ || isAuthentic());
}

// Reads the next stored bytes and decrypts them.
bool EntryData::readStored(unsigned char* out, std::size_t size) {
  if (size > storedLeft_) return false;
  const std::size_t known = std::min(size, ahead_.size() - aheadUsed_);
  std::copy_n(ahead_.data() + aheadUsed_, known, out);
  aheadUsed_ += known;
  const std::uint64_t position = layout_.position + layout_.compressedSize - storedLeft_ + known;
  if (!file_.readAt(position, out + known, size - known)) return false;
  storedLeft_ -= size;
  if (cipher_) cipher_->decrypt(out, size);
  if (aes_) aes_->decrypt(out, size);
  return true;
}

bool EntryData::readDecoded(unsigned char* out, std::size_t size) {
  if (size == 0) return true;
  if (layout_.raw || layout_.method->isStored()) return readStored(out, size);
  if (decoder_) return decode(out, size);
  if (!layout_.method->isDeflate()) return makeDecoder() && decode(out, size);
  if (!whole_.empty()) {
    std::memcpy(out, whole_.data() + (whole_.size() - plainLeft_), size);
    return true;
  }
  // Deflate hardly makes data larger. False sizes are found in small steps.
  const bool isPossible = storedLeft_ <= kInputBlock || storedLeft_ - kInputBlock <= plainLeft_;
  const bool fits = size == plainLeft_ && storedLeft_ <= kLargestStored;
  if (isPossible && fits) return decodeWhole(out);
  if (isPossible && plainLeft_ <= kSmall) {
    whole_.resize(static_cast<std::size_t>(plainLeft_));
    if (!decodeWhole(whole_.data())) return false;
    std::memcpy(out, whole_.data(), size);
    return true;
  }
  return makeDecoder() && decode(out, size);
}

bool EntryData::makeDecoder() {
  decoder_ =
      layout_.method->makeDecoder({.plainSize = layout_.uncompressedSize, .flags = layout_.flags});
  if (!decoder_) status_ = ZipStatusNoMemory;
  return decoder_ != nullptr;
}

bool EntryData::decodeWhole(unsigned char* out) {
  const std::size_t size = static_cast<std::size_t>(storedLeft_);
  // Without encryption nothing has been read before.
  const unsigned char* stored = ahead_.data();
  if (cipher_ || aes_ || ahead_.size() < size) {
    unsigned char* const loaded = buffers_.stored.reserve(size);
    if (!readStored(loaded, size)) return false;
    stored = loaded;
  }
  return buffers_.inflater.inflate(stored, size, out,
                                   static_cast<std::size_t>(layout_.uncompressedSize));
}

bool EntryData::decode(unsigned char* out, std::size_t size) {
  DecoderOutput output{out, size};
  while (output.size > 0) {
    if (hasEnded_ || (input_.size == 0 && !refill())) return false;
    const std::size_t inputSize = input_.size;
    const std::size_t outputSize = output.size;
    switch (decoder_->decode(input_, output)) {
      case Decoder::Result::Continues:
        if (input_.size == inputSize && output.size == outputSize) return false;
        break;
      case Decoder::Result::Ended:
        hasEnded_ = true;
        break;
      case Decoder::Result::Unsupported:
        status_ = ZipStatusUnknownMethod;
        return false;
      case Decoder::Result::OutOfMemory:
        status_ = ZipStatusNoMemory;
        return false;
      case Decoder::Result::Damaged:
        return false;
    }
  }
  return true;
}

// Reads the next stored bytes for the decoder. Without more of them it may still have plain ones to
// give.
bool EntryData::refill() {
  inputBlock_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(storedLeft_, kInputBlock)));
  if (!readStored(inputBlock_.data(), inputBlock_.size())) return false;
  input_ = {inputBlock_.data(), inputBlock_.size(), storedLeft_ == 0};
  return true;
}

// Reports whether the compressed stream ends after the last plain byte.
bool EntryData::endsHere() {
  if (!decoder_ || hasEnded_) return true;
  unsigned char beyond;
  return !decode(&beyond, 1) && hasEnded_;
}

}  // namespace zip_engine
