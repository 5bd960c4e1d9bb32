#include "zip/engine/codec/methods.h"

#include <algorithm>

#include "zip/engine/codec/deflate64_decoder.h"
#include "zip/engine/codec/inflating_decoder.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

const Method* findMethod(std::uint32_t number) {
  static const Method kMethods[] = {
      {ZipMethodStored, "stored", kVersionStored},
      {ZipMethodDeflate, "deflate", kVersionDeflate, makeInflatingDecoder},
      {ZipMethodZstandard, "Zstandard", kVersionZstandard, zstandardDecoder(), zstandardEncoder()},
      {9, "Deflate64", 0, makeDeflate64Decoder},
      {12, "bzip2", 0, bzip2Decoder()},
      {14, "LZMA", 0, lzmaDecoder()},
      {95, "XZ", 0, xzDecoder()},
      // Not read.
      {1, "shrink"},
      {2, "reduce 1"},
      {3, "reduce 2"},
      {4, "reduce 3"},
      {5, "reduce 4"},
      {6, "implode"},
      {10, "DCL implode"},
      {18, "TERSE"},
      {19, "LZ77"},
      {94, "MP3"},
      {96, "JPEG"},
      {97, "WavPack"},
      {98, "PPMd"},
  };
  const auto* const found =
      std::find_if(std::begin(kMethods), std::end(kMethods),
                   [number](const Method& method) { return method.number == number; });
  return found == std::end(kMethods) ? nullptr : found;
}

}  // namespace zip_engine

const char* ZipMethodName(std::uint32_t method) {
  const zip_engine::Method* const found = zip_engine::findMethod(method);
  return found == nullptr ? "" : found->name;
}

int ZipCanRead(std::uint32_t method) { return zip_engine::isReadableMethod(method) ? 1 : 0; }

int ZipCanWrite(std::uint32_t method) { return zip_engine::isWritableMethod(method) ? 1 : 0; }
