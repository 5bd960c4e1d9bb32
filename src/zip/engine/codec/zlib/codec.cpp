#include "zip/engine/codec/codec.h"

#include <zlib.h>

#include <limits>

#include "zip/engine.h"

namespace zip_engine {
namespace {

constexpr std::size_t kLargest = std::numeric_limits<uInt>::max();
// The hash tables' share of memory that zlib recommends.
constexpr int kMemoryLevel = 8;

}  // namespace

std::uint32_t crc32(std::uint32_t crc, const void* data, std::size_t size) {
  // For null it would return the start value.
  if (size == 0) return crc;
  return static_cast<std::uint32_t>(::crc32_z(crc, static_cast<const Bytef*>(data), size));
}

struct BufferDeflater::Compressor {
  explicit Compressor(int wanted) : level(wanted) {}
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  ~Compressor() { deflateEnd(&stream); }

  int level;
  z_stream stream{};
  bool good = deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, kMemoryLevel,
                           Z_DEFAULT_STRATEGY) == Z_OK;
};

BufferDeflater::BufferDeflater() = default;
BufferDeflater::~BufferDeflater() = default;

bool BufferDeflater::appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size,
                                   int level) {
  if (size == 0 || size > kLargest) return false;
  if (compressor_ == nullptr || level != compressor_->level) {
    compressor_ = std::make_unique<Compressor>(level);
  }
  z_stream& stream = compressor_->stream;
  if (!compressor_->good || deflateReset(&stream) != Z_OK) return false;
  const std::size_t start = out.size();
  out.resize(start + size - 1);
  stream.next_in = const_cast<unsigned char*>(plain);
  stream.avail_in = static_cast<uInt>(size);
  stream.next_out = out.data() + start;
  stream.avail_out = static_cast<uInt>(size - 1);
  const bool fits = deflate(&stream, Z_FINISH) == Z_STREAM_END;
  out.resize(fits ? out.size() - stream.avail_out : start);
  return fits;
}

struct BufferInflater::Decompressor {
  Decompressor() = default;
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  ~Decompressor() { inflateEnd(&stream); }

  z_stream stream{};
  bool good = inflateInit2(&stream, -MAX_WBITS) == Z_OK;
};

BufferInflater::BufferInflater() = default;
BufferInflater::~BufferInflater() = default;

bool BufferInflater::inflate(const unsigned char* stored, std::size_t storedSize,
                             unsigned char* plain, std::size_t plainSize) {
  if (storedSize > kLargest || plainSize > kLargest) return false;
  if (decompressor_ == nullptr) decompressor_ = std::make_unique<Decompressor>();
  z_stream& stream = decompressor_->stream;
  if (!decompressor_->good || inflateReset(&stream) != Z_OK) return false;
  stream.next_in = const_cast<unsigned char*>(stored);
  stream.avail_in = static_cast<uInt>(storedSize);
  stream.next_out = plain;
  stream.avail_out = static_cast<uInt>(plainSize);
  return ::inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.avail_out == 0;
}

}  // namespace zip_engine
