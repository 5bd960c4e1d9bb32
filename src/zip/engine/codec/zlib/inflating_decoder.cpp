#include "zip/engine/codec/inflating_decoder.h"

#include <zlib.h>

namespace zip_engine {
namespace {

class InflatingDecoder : public Decoder {
 public:
  InflatingDecoder() = default;
  InflatingDecoder(const InflatingDecoder&) = delete;
  InflatingDecoder& operator=(const InflatingDecoder&) = delete;
  ~InflatingDecoder() override { inflateEnd(&stream_); }

  bool isGood() const { return isGood_; }

  Result decode(DecoderInput& input, DecoderOutput& output) override {
    const uInt inputSize = stream_.avail_in = limitedTo<uInt>(input.size);
    const uInt outputSize = stream_.avail_out = limitedTo<uInt>(output.size);
    stream_.next_in = const_cast<unsigned char*>(input.bytes);
    stream_.next_out = output.bytes;
    const int status = ::inflate(&stream_, Z_NO_FLUSH);
    input.skip(inputSize - stream_.avail_in);
    output.skip(outputSize - stream_.avail_out);
    if (status == Z_STREAM_END) return Result::Ended;
    return status == Z_OK ? Result::Continues : Result::Damaged;
  }

 private:
  z_stream stream_{};
  bool isGood_ = inflateInit2(&stream_, -MAX_WBITS) == Z_OK;
};

}  // namespace

std::unique_ptr<Decoder> makeInflatingDecoder(const DecoderFacts&) {
  auto decoder = std::make_unique<InflatingDecoder>();
  return decoder->isGood() ? std::move(decoder) : nullptr;
}

}  // namespace zip_engine
