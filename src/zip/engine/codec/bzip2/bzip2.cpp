#include <bzlib.h>

#include "zip/engine/codec/optional_codecs.h"

namespace zip_engine {
namespace {

class Bzip2Decoder : public Decoder {
 public:
  Bzip2Decoder() = default;
  Bzip2Decoder(const Bzip2Decoder&) = delete;
  Bzip2Decoder& operator=(const Bzip2Decoder&) = delete;
  ~Bzip2Decoder() override { BZ2_bzDecompressEnd(&stream_); }

  bool isGood() const { return isGood_; }

  Result decode(DecoderInput& input, DecoderOutput& output) override {
    const unsigned inputSize = stream_.avail_in = limitedTo<unsigned>(input.size);
    const unsigned outputSize = stream_.avail_out = limitedTo<unsigned>(output.size);
    // It does not write to its input.
    stream_.next_in = reinterpret_cast<char*>(const_cast<unsigned char*>(input.bytes));
    stream_.next_out = reinterpret_cast<char*>(output.bytes);
    const int status = BZ2_bzDecompress(&stream_);
    input.skip(inputSize - stream_.avail_in);
    output.skip(outputSize - stream_.avail_out);
    switch (status) {
      case BZ_OK:
        return Result::Continues;
      case BZ_STREAM_END:
        return Result::Ended;
      case BZ_MEM_ERROR:
        return Result::OutOfMemory;
      default:
        return Result::Damaged;
    }
  }

 private:
  bz_stream stream_{};
  bool isGood_ = BZ2_bzDecompressInit(&stream_, 0, 0) == BZ_OK;
};

}  // namespace

MakeDecoder bzip2Decoder() {
  return [](const DecoderFacts&) -> std::unique_ptr<Decoder> {
    auto decoder = std::make_unique<Bzip2Decoder>();
    return decoder->isGood() ? std::move(decoder) : nullptr;
  };
}

}  // namespace zip_engine
