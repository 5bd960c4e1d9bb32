#pragma once
// Decoding the stored bytes of an entry piece by piece.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace zip_engine {

// The largest window, or dictionary, that stored bytes may ask for. It is the largest one that zstd's
// own program reads by default, and twice the largest one of xz. The memory is allocated in one
// piece, but the system provides it as plain bytes arrive.
inline constexpr int kLargestWindowBits = 27;
inline constexpr std::uint64_t kLargestWindow = std::uint64_t{1} << kLargestWindowBits;

// Stored bytes that were not decoded yet.
struct DecoderInput {
  const unsigned char* bytes = nullptr;
  std::size_t size = 0;
  bool isLast = false;  // no more bytes follow these

  void skip(std::size_t count) {
    bytes += count;
    size -= count;
  }
};

// Space for plain bytes.
struct DecoderOutput {
  unsigned char* bytes = nullptr;
  std::size_t size = 0;

  void skip(std::size_t count) {
    bytes += count;
    size -= count;
  }
};

// Returns a size in the type of a decoding library, which may be narrower: the rest is for its next call.
template <typename T>
T limitedTo(std::size_t size) {
  return static_cast<T>(std::min<std::size_t>(size, std::numeric_limits<T>::max()));
}

// What the record of an entry says of its content.
struct DecoderFacts {
  std::uint64_t plainSize = 0;  // not proved
  std::uint16_t flags = 0;
};

class Decoder {
 public:
  enum class Result {
    Continues,
    Ended,        // there are no more plain bytes
    Damaged,      // the stored bytes are invalid
    Unsupported,  // they need a larger window than kLargestWindow, or a variant of the method
    OutOfMemory,
  };

  virtual ~Decoder() = default;
  // Decodes as much of the input as there is space for, and skips what it has used of both.
  virtual Result decode(DecoderInput& input, DecoderOutput& output) = 0;
};

}  // namespace zip_engine
