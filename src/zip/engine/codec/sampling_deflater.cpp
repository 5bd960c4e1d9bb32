#include "zip/engine/codec/sampling_deflater.h"

namespace zip_engine {
namespace {

constexpr std::size_t kStride = 16 << 10;
constexpr std::size_t kSample = 1 << 10;
// Deflating less than this is as fast as sampling it.
constexpr std::size_t kLeastSampled = 64 << 10;
constexpr int kFastest = 1;

}  // namespace

bool SamplingDeflater::appendSmaller(Bytes& out, const unsigned char* plain, std::size_t size,
                                     int level) {
  return (size < kLeastSampled || samplesShrink(plain, size)) &&
         deflater_.appendSmaller(out, plain, size, level);
}

bool SamplingDeflater::samplesShrink(const unsigned char* plain, std::size_t size) {
  samples_.clear();
  for (std::size_t at = 0; at + kSample <= size; at += kStride) {
    samples_.insert(samples_.end(), plain + at, plain + at + kSample);
  }
  deflatedSamples_.clear();
  return sampler_.appendSmaller(deflatedSamples_, samples_.data(), samples_.size(), kFastest);
}

}  // namespace zip_engine
