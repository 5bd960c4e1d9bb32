#pragma once
// Decoding the stored bytes of an entry piece by piece.

#include <cstddef>
#include <cstdint>

namespace zip_engine {

// Stored bytes that were not decoded yet.
struct DecoderInput {
  const unsigned char* bytes = nullptr;
  std::size_t size = 0;
  bool isLast = false;  // no more bytes follow these
};

// Space for plain bytes.
struct DecoderOutput {
  unsigned char* bytes = nullptr;
  std::size_t size = 0;
};

// What the record of an entry says of its content.
struct DecoderFacts {
  std::uint64_t plainSize = 0;  // not proved
  std::uint16_t flags = 0;
};

class Decoder {
 public:
  enum class Result {
    Continues,
    Ended,    // there are no more plain bytes
    Damaged,  // the stored bytes are invalid
  };

  virtual ~Decoder() = default;
  // Decodes as much of the input as there is space for, and removes from the front of both what it
  // has used.
  virtual Result decode(DecoderInput& input, DecoderOutput& output) = 0;
};

}  // namespace zip_engine
