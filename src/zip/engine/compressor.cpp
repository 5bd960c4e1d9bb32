#include "zip/engine/compressor.h"

namespace zip_engine {

StreamDeflater::StreamDeflater(int level) {
  constexpr int kMemoryLevel = 8;
  good_ = deflateInit2(&stream_, level, Z_DEFLATED, -MAX_WBITS, kMemoryLevel, Z_DEFAULT_STRATEGY) ==
          Z_OK;
}

StreamDeflater::~StreamDeflater() { deflateEnd(&stream_); }

}  // namespace zip_engine
