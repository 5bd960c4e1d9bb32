#include "zip/engine/codec/inflating_decoder.h"

#include <isa-l/igzip_lib.h>

namespace zip_engine {
namespace {

// Has 87 KB, so it is always on the heap.
class InflatingDecoder : public Decoder {
 public:
  InflatingDecoder() { isal_inflate_init(&state_); }
  InflatingDecoder(const InflatingDecoder&) = delete;
  InflatingDecoder& operator=(const InflatingDecoder&) = delete;

  Result decode(DecoderInput& input, DecoderOutput& output) override {
    const std::uint32_t inputSize = state_.avail_in = limitedTo<std::uint32_t>(input.size);
    const std::uint32_t outputSize = state_.avail_out = limitedTo<std::uint32_t>(output.size);
    // It does not write to its input.
    state_.next_in = const_cast<unsigned char*>(input.bytes);
    state_.next_out = output.bytes;
    const int status = isal_inflate(&state_);
    // After a failure these can be more than before, or less than was written.
    const bool isCounted = state_.avail_in <= inputSize && state_.avail_out <= outputSize;
    if (status < 0 || !isCounted) return Result::Damaged;
    input.skip(inputSize - state_.avail_in);
    output.skip(outputSize - state_.avail_out);
    return state_.block_state == ISAL_BLOCK_FINISH ? Result::Ended : Result::Continues;
  }

 private:
  inflate_state state_;
};

}  // namespace

std::unique_ptr<Decoder> makeInflatingDecoder(const DecoderFacts&) {
  return std::make_unique<InflatingDecoder>();
}

}  // namespace zip_engine
