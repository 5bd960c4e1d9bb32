#pragma once
// Deflate (RFC 1951) and CRC-32 of whole buffers. The build chooses the library
// that does it: libdeflate/codec.cpp or zlib/codec.cpp.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "zip/engine/format.h"

namespace zip_engine {

// Goes on from the CRC-32 of what stands in front of the data; 0 at the start.
std::uint32_t crc32(std::uint32_t crc, const void* data, std::size_t size);

// Deflates whole buffers; what it needs for that is kept from call to call.
class BufferDeflater {
 public:
  BufferDeflater();
  ~BufferDeflater();
  BufferDeflater(const BufferDeflater&) = delete;
  BufferDeflater& operator=(const BufferDeflater&) = delete;

  // Appends the deflated bytes to `out`. False, with `out` unchanged, if they
  // would not be fewer than the plain ones, or without memory.
  bool appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size, int level);

 private:
  struct Compressor;
  std::unique_ptr<Compressor> compressor_;
};

// Inflates what gives exactly `plainSize` bytes. False for anything else.
bool inflateBuffer(const unsigned char* stored, std::size_t storedSize, unsigned char* plain,
                   std::size_t plainSize);

}  // namespace zip_engine
