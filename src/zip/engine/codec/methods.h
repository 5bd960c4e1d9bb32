#pragma once
// The compression methods of the format, in one table.

#include <cstdint>

#include "zip/engine.h"
#include "zip/engine/codec/optional_codecs.h"

namespace zip_engine {

struct Method {
  std::uint16_t number;  // APPNOTE 4.4.5
  const char* name;
  std::uint16_t versionNeeded = 0;    // to extract; 0 if the method is never written
  MakeDecoder makeDecoder = nullptr;  // null if the build does not read it, and for stored content
  MakeEncoder makeEncoder = nullptr;  // null if it does not write it, and for stored and deflate

  bool isStored() const { return number == ZipMethodStored; }
  bool isDeflate() const { return number == ZipMethodDeflate; }
  bool isReadable() const { return isStored() || makeDecoder != nullptr; }
  bool isWritable() const { return isStored() || isDeflate() || makeEncoder != nullptr; }
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
