#pragma once
// Deflate piece by piece, with zlib. Whole buffers are inflated faster, as codec.h does.

#include <memory>

#include "zip/engine/codec/decoder.h"

namespace zip_engine {

// Returns null if memory is short.
std::unique_ptr<Decoder> makeInflatingDecoder(const DecoderFacts& facts);

}  // namespace zip_engine
