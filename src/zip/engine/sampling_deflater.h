#pragma once
// Deflating without wasting time on what does not shrink.

#include "zip/engine/codec.h"

namespace zip_engine {

// As BufferDeflater, but of large data samples are deflated first; where they do
// not get smaller, as in pictures, films and archives, the whole is not tried. A
// run of bytes that would shrink is found if it is longer than 17 KiB.
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
