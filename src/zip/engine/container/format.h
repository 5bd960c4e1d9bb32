#pragma once
// Constants of the zip format (PKWARE APPNOTE), and its numbers, which are always little-endian.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zip_engine {

inline constexpr std::uint32_t kLocalSignature = 0x04034b50;
inline constexpr std::uint32_t kCentralSignature = 0x02014b50;
inline constexpr std::uint32_t kEndSignature = 0x06054b50;
inline constexpr std::uint32_t kEnd64Signature = 0x06064b50;
inline constexpr std::uint32_t kLocator64Signature = 0x07064b50;
inline constexpr std::uint32_t kDescriptorSignature = 0x08074b50;

// Sizes of the fixed parts of the records, signature included.
inline constexpr std::size_t kLocalSize = 30;
inline constexpr std::size_t kCentralSize = 46;
inline constexpr std::size_t kEndSize = 22;
inline constexpr std::size_t kEnd64Size = 56;
inline constexpr std::size_t kLocator64Size = 20;

inline constexpr std::uint32_t kSignatureSignature = 0x05054b50;  // of the digital signature

inline constexpr std::uint16_t kMethodAes = 99;

inline constexpr std::uint16_t kZip64ExtraId = 0x0001;

// "Version needed to extract", ten times the version of the format.
inline constexpr std::uint16_t kVersionStored = 10;
inline constexpr std::uint16_t kVersionDeflate = 20;
inline constexpr std::uint16_t kVersionZip64 = 45;
inline constexpr std::uint16_t kVersionAes = 51;
inline constexpr std::uint16_t kVersionZstandard = 63;

// Values that refer to the zip64 record or extra field.
inline constexpr std::uint16_t kSaturated16 = 0xFFFF;
inline constexpr std::uint32_t kSaturated32 = 0xFFFFFFFF;

// General purpose flags.
inline constexpr std::uint16_t kFlagEncrypted = 1 << 0;
inline constexpr std::uint16_t kFlagLzmaEndMark = 1 << 1;
inline constexpr std::uint16_t kFlagDescriptor = 1 << 3;
inline constexpr std::uint16_t kFlagPatched = 1 << 5;
inline constexpr std::uint16_t kFlagStrongEncryption = 1 << 6;
inline constexpr std::uint16_t kFlagUtf8 = 1 << 11;

// Bytes that precede encrypted data.
inline constexpr std::size_t kEncryptionHeaderSize = 12;

inline std::uint16_t load16(const unsigned char* p) {
  return static_cast<std::uint16_t>(p[0] | p[1] << 8);
}
inline std::uint32_t load32(const unsigned char* p) {
  return load16(p) | std::uint32_t{load16(p + 2)} << 16;
}
inline std::uint64_t load64(const unsigned char* p) {
  return load32(p) | std::uint64_t{load32(p + 4)} << 32;
}

inline void store16(unsigned char* p, std::uint16_t value) {
  p[0] = static_cast<unsigned char>(value);
  p[1] = static_cast<unsigned char>(value >> 8);
}
inline void store32(unsigned char* p, std::uint32_t value) {
  store16(p, static_cast<std::uint16_t>(value));
  store16(p + 2, static_cast<std::uint16_t>(value >> 16));
}
inline void store64(unsigned char* p, std::uint64_t value) {
  store32(p, static_cast<std::uint32_t>(value));
  store32(p + 4, static_cast<std::uint32_t>(value >> 32));
}

using Bytes = std::vector<unsigned char>;

inline void append16(Bytes& out, std::uint16_t value) {
  out.resize(out.size() + 2);
  store16(out.data() + out.size() - 2, value);
}
inline void append32(Bytes& out, std::uint32_t value) {
  out.resize(out.size() + 4);
  store32(out.data() + out.size() - 4, value);
}
inline void append64(Bytes& out, std::uint64_t value) {
  out.resize(out.size() + 8);
  store64(out.data() + out.size() - 8, value);
}

}  // namespace zip_engine
