#include "zip/engine/codec/methods.h"

#include <algorithm>

#include "zip/engine/codec/inflating_decoder.h"
#include "zip/engine/container/format.h"

namespace zip_engine {
namespace {

const Method kMethods[] = {
    {ZipMethodStored, "stored", kVersionStored},
    {ZipMethodDeflate, "deflate", kVersionDeflate, makeInflatingDecoder},
    {1, "shrink"},
    {6, "implode"},
    {9, "Deflate64"},
    {12, "bzip2"},
    {14, "LZMA"},
    {93, "Zstandard"},
    {95, "XZ"},
    {98, "PPMd"},
};

}  // namespace

const Method* findMethod(std::uint32_t number) {
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
