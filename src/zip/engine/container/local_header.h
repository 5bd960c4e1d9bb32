#pragma once
// The local header that precedes the data of each entry (APPNOTE 4.3.7).

#include <cstdint>
#include <string_view>

#include "zip/engine/container/format.h"

namespace zip_engine {

// A view of kLocalSize bytes, after which the name and the extra field follow.
struct LocalHeader {
  const unsigned char* bytes = nullptr;

  bool isValid() const { return load32(bytes) == kLocalSignature; }
  // Without the next byte, in which some programs write their system.
  unsigned char versionNeeded() const { return bytes[4]; }
  std::uint16_t flags() const { return load16(bytes + 6); }
  std::uint16_t method() const { return load16(bytes + 8); }
  std::uint32_t crc() const { return load32(bytes + 14); }
  std::uint32_t compressedSize() const { return load32(bytes + 18); }
  std::uint32_t uncompressedSize() const { return load32(bytes + 22); }
  std::uint16_t nameLength() const { return load16(bytes + 26); }
  std::uint16_t extraLength() const { return load16(bytes + 28); }
  // Size of the header with name and extra field.
  std::size_t size() const { return kLocalSize + nameLength() + extraLength(); }
  std::string_view name() const {
    return {reinterpret_cast<const char*>(bytes + kLocalSize), nameLength()};
  }
  const unsigned char* extra() const { return bytes + kLocalSize + nameLength(); }
};

}  // namespace zip_engine
