#pragma once
// The codecs of libraries that a build may lack. Each is implemented in the directory of its library;
// without that, in without/, where the functions return null.

#include <memory>

#include "zip/engine/codec/decoder.h"
#include "zip/engine/codec/encoder.h"

namespace zip_engine {

// Make a coder, or return null if memory is short.
using MakeDecoder = std::unique_ptr<Decoder> (*)(const DecoderFacts& facts);
using MakeEncoder = std::unique_ptr<Encoder> (*)();

MakeDecoder zstandardDecoder();
MakeEncoder zstandardEncoder();
MakeDecoder bzip2Decoder();
MakeDecoder lzmaDecoder();
MakeDecoder xzDecoder();

}  // namespace zip_engine
