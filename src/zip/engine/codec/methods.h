#pragma once
// The compression methods that the engine reads and writes.

#include "zip/engine.h"

namespace zip_engine {

// True for the numbers of these methods. The encryption AES has a number too, but is none of them.
inline bool isCompressionMethod(int method) {
  return method == ZipMethodStored || method == ZipMethodDeflate;
}

}  // namespace zip_engine
