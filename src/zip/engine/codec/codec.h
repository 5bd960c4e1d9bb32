#pragma once
// Deflate (RFC 1951) and CRC-32 of whole buffers, implemented by libdeflate/codec.cpp or by
// zlib/codec.cpp, as the build chooses.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "zip/engine/container/format.h"

namespace zip_engine {

// Continues the CRC-32 of the preceding bytes; 0 at the start.
std::uint32_t crc32(std::uint32_t crc, const void* data, std::size_t size);

// Deflates whole buffers. Keeps its memory from call to call.
class BufferDeflater {
 public:
  BufferDeflater();
  ~BufferDeflater();
  BufferDeflater(const BufferDeflater&) = delete;
  BufferDeflater& operator=(const BufferDeflater&) = delete;

  // Appends the deflated bytes to `out`. Returns false, with `out` unchanged, if they would not be
  // fewer than the plain ones, or if memory is short.
  bool appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size, int level);

 private:
  struct Compressor;
  std::unique_ptr<Compressor> compressor_;
};

// Inflates whole buffers. Keeps its memory from call to call.
class BufferInflater {
 public:
  BufferInflater();
  ~BufferInflater();
  BufferInflater(const BufferInflater&) = delete;
  BufferInflater& operator=(const BufferInflater&) = delete;

  // Returns false unless the stored bytes inflate to exactly `plainSize` bytes.
  bool inflate(const unsigned char* stored, std::size_t storedSize, unsigned char* plain,
               std::size_t plainSize);

 private:
  struct Decompressor;
  std::unique_ptr<Decompressor> decompressor_;
};

}  // namespace zip_engine
