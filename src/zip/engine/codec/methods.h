#pragma once
// The compression methods of the format, in one table.

#include <cstdint>
#include <memory>

#include "zip/engine.h"
#include "zip/engine/codec/decoder.h"

namespace zip_engine {

struct Method {
  std::uint16_t number;  // APPNOTE 4.4.5
  const char* name;
  std::uint16_t versionNeeded = 0;  // to extract; 0 if the method is not written
  // Makes a decoder, or returns null if memory is short. Null if the build does not read the
  // method, and for stored content, which needs none.
  std::unique_ptr<Decoder> (*makeDecoder)(const DecoderFacts& facts) = nullptr;

  bool isStored() const { return number == ZipMethodStored; }
  bool isDeflate() const { return number == ZipMethodDeflate; }
  bool isReadable() const { return isStored() || makeDecoder != nullptr; }
  bool isWritable() const { return versionNeeded != 0; }
};

// Returns null for a number that is not in the table. The encryption AES has a number too, but is no
// method.
const Method* findMethod(std::uint32_t number);

inline bool isReadableMethod(std::uint32_t number) {
  const Method* const method = findMethod(number);
  return method != nullptr && method->isReadable();
}

inline bool isWritableMethod(std::uint32_t number) {
  const Method* const method = findMethod(number);
  return method != nullptr && method->isWritable();
}

}  // namespace zip_engine
