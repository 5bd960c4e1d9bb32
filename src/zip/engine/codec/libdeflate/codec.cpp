#include "zip/engine/codec/codec.h"

#include <libdeflate.h>

#include <utility>

#include "zip/engine.h"

namespace zip_engine {

std::uint32_t crc32(std::uint32_t crc, const void* data, std::size_t size) {
  // For null it would return the start value.
  return size == 0 ? crc : libdeflate_crc32(crc, data, size);
}

struct BufferDeflater::Compressor {
  struct Deleter {
    void operator()(libdeflate_compressor* codec) const { libdeflate_free_compressor(codec); }
  };

  int level;
  std::unique_ptr<libdeflate_compressor, Deleter> codec;
};

BufferDeflater::BufferDeflater() = default;
BufferDeflater::~BufferDeflater() = default;

bool BufferDeflater::appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size,
                                   int level) {
  if (size == 0) return false;
  if (compressor_ == nullptr || level != compressor_->level) {
    constexpr int kDefault = 6;
    Compressor made{level, {}};
    made.codec.reset(libdeflate_alloc_compressor(level == ZipLevelDefault ? kDefault : level));
    if (made.codec == nullptr) return false;
    compressor_ = std::make_unique<Compressor>(std::move(made));
  }
  const std::size_t start = out.size();
  out.resize(start + size - 1);
  const std::size_t packed = libdeflate_deflate_compress(compressor_->codec.get(), plain, size,
                                                         out.data() + start, size - 1);
  out.resize(start + packed);
  return packed != 0;
}

struct BufferInflater::Decompressor {
  struct Deleter {
    void operator()(libdeflate_decompressor* codec) const { libdeflate_free_decompressor(codec); }
  };

  std::unique_ptr<libdeflate_decompressor, Deleter> codec;
};

BufferInflater::BufferInflater() = default;
BufferInflater::~BufferInflater() = default;

bool BufferInflater::inflate(const unsigned char* stored, std::size_t storedSize,
                             unsigned char* plain, std::size_t plainSize) {
  if (decompressor_ == nullptr) {
    Decompressor made;
    made.codec.reset(libdeflate_alloc_decompressor());
    if (made.codec == nullptr) return false;
    decompressor_ = std::make_unique<Decompressor>(std::move(made));
  }
  return libdeflate_deflate_decompress(decompressor_->codec.get(), stored, storedSize, plain,
                                       plainSize, nullptr) == LIBDEFLATE_SUCCESS;
}

}  // namespace zip_engine
