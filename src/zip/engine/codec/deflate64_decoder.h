#pragma once
// Deflate64: Deflate with a window of 64 KiB and longer matches. No library that other methods need
// has it, and large archives that Windows makes use it.

#include <memory>

#include "zip/engine/codec/decoder.h"

namespace zip_engine {

std::unique_ptr<Decoder> makeDeflate64Decoder(const DecoderFacts& facts);

}  // namespace zip_engine
