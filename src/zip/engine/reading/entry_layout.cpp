#include "zip/engine/reading/entry_layout.h"

#include "zip/engine.h"
#include "zip/engine/codec/methods.h"

namespace zip_engine {
namespace {

constexpr int kReadable = 0;

// Reports whether stored bytes can have that many plain ones.
bool isPossibleSize(std::uint16_t method, std::uint64_t stored, std::uint64_t plain) {
  if (method == ZipMethodStored) return stored == plain;
  if (method == ZipMethodDeflate) {
    // One deflated byte inflates to at most 1,032: four times two codes of one bit, for 258 bytes.
    constexpr std::uint64_t kMost = 1032;
    return plain / kMost + (plain % kMost != 0 ? 1 : 0) <= stored;
  }
  // A bzip2 stream of a few bytes can have a megabyte of them.
  return stored != 0 || plain == 0;
}

// `method` is the one inside the encryption, `overhead` the bytes that the encryption adds.
int checkSizes(const CentralRecord& record, std::uint16_t method, std::uint64_t overhead) {
  if (record.compressedSize < overhead) return ZipStatusDamaged;
  const std::uint64_t payload = record.compressedSize - overhead;
  return isPossibleSize(method, payload, record.uncompressedSize) ? kReadable : ZipStatusDamaged;
}

bool isAes(const CentralRecord& record) {
  return isEncrypted(record) && record.method() == kMethodAes;
}

}  // namespace

bool isEncrypted(const CentralRecord& record) { return (record.flags() & kFlagEncrypted) != 0; }

std::optional<AesParameters> aesOf(const CentralRecord& record) {
  return isAes(record) ? aesParameters(record) : std::nullopt;
}

std::uint32_t encryptionOf(const CentralRecord& record) {
  if (!isEncrypted(record)) return ZipNotEncrypted;
  if (isAes(record)) return ZipEncryptedAes;
  return (record.flags() & kFlagStrongEncryption) != 0 ? ZipEncryptedUnknown
                                                       : ZipEncryptedTraditional;
}

std::uint16_t innerMethodOf(const CentralRecord& record) {
  return isAes(record) ? aesMethod(record).value_or(kMethodAes) : record.method();
}

int checkReadable(const CentralRecord& record, const char* password) {
  if ((record.flags() & kFlagStrongEncryption) != 0) return ZipStatusUnknownEncryption;
  if ((record.flags() & kFlagPatched) != 0) return ZipStatusUnknownMethod;
  const std::uint16_t method = innerMethodOf(record);
  if (!isReadableMethod(method)) return ZipStatusUnknownMethod;
  const std::optional<AesParameters> aes = aesOf(record);
  if (isAes(record) && !(aes && hasAes())) return ZipStatusUnknownEncryption;
  if (isEncrypted(record) && password == nullptr) return ZipStatusNoPassword;
  if (aes) return checkSizes(record, method, aes->headerSize() + kAesCodeSize);
  return checkSizes(record, method, isEncrypted(record) ? kEncryptionHeaderSize : 0);
}

EntryLayout layoutOf(const CentralRecord& record, std::uint64_t position, bool raw,
                     const char* password) {
  const std::optional<AesParameters> aes = aesOf(record);
  // The check byte is from the time if the CRC was not known when the entry was begun.
  const std::uint32_t check =
      (record.flags() & kFlagDescriptor) != 0 ? std::uint32_t{record.time()} << 16 : record.crc();
  return {.position = position,
          .compressedSize = record.compressedSize,
          .uncompressedSize = record.uncompressedSize,
          .crc = record.crc(),
          .method = findMethod(aes ? aes->method : record.method()),
          .flags = record.flags(),
          .raw = raw,
          .password = isEncrypted(record) ? password : nullptr,
          .aes = aes,
          .checkByte = static_cast<unsigned char>(check >> 24)};
}

}  // namespace zip_engine
