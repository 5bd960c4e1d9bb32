#include "zip/engine/compressor.h"

#include "zip/engine.h"

namespace zip_engine {

bool BufferDeflater::appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size,
                                   int level) {
  if (size < 2) return false;
  if (compressor_ == nullptr || level != level_) {
    constexpr int kDefault = 6;
    compressor_.reset(libdeflate_alloc_compressor(level == ZipLevelDefault ? kDefault : level));
    level_ = level;
    if (compressor_ == nullptr) return false;
  }
  const std::size_t start = out.size();
  out.resize(start + size - 1);
  const std::size_t packed =
      libdeflate_deflate_compress(compressor_.get(), plain, size, out.data() + start, size - 1);
  out.resize(start + packed);
  return packed != 0;
}

StreamDeflater::StreamDeflater(int level) {
  constexpr int kMemoryLevel = 8;
  good_ = deflateInit2(&stream_, level, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) ==
          Z_OK;
}

StreamDeflater::~StreamDeflater() { deflateEnd(&stream_); }

}  // namespace zip_engine
