#pragma once
// Deflating without trying data that cannot be compressed.

#include "zip/engine/codec/codec.h"

namespace zip_engine {

// A BufferDeflater that deflates samples of large data first. If these do not get smaller, as in
// pictures, films and archives, the rest is not tried. A compressible run of bytes is found if it
// is longer than 17 KiB.
class SamplingDeflater {
 public:
  bool appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size, int level);

 private:
  bool samplesShrink(const unsigned char* plain, std::size_t size);

  BufferDeflater deflater_;
  BufferDeflater sampler_;
  Bytes samples_;
  Bytes deflatedSamples_;
};

}  // namespace zip_engine
