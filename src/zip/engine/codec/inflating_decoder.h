#pragma once
// Deflate piece by piece, implemented by isal/inflating_decoder.cpp or by zlib/inflating_decoder.cpp, as
// the build chooses. Whole buffers are inflated faster, as codec.h does.
//
// ISA-L takes some streams that zlib refuses: those whose codes are incomplete, but without a use of
// what is not defined. As other damage that deflate does not show, that is left to the CRC-32.

#include <memory>

#include "zip/engine/codec/decoder.h"

namespace zip_engine {

// Returns null if memory is short.
std::unique_ptr<Decoder> makeInflatingDecoder(const DecoderFacts& facts);

}  // namespace zip_engine
