#include <zstd.h>
#include <zstd_errors.h>

#include <algorithm>

#include "zip/engine.h"
#include "zip/engine/codec/optional_codecs.h"

namespace zip_engine {
namespace {

struct Deleter {
  void operator()(ZSTD_DCtx* context) const { ZSTD_freeDCtx(context); }
  void operator()(ZSTD_CCtx* context) const { ZSTD_freeCCtx(context); }
};

class ZstandardDecoder : public Decoder {
 public:
  bool isGood() const { return isGood_; }

  // The stored bytes are one frame or several.
  Result decode(DecoderInput& input, DecoderOutput& output) override {
    ZSTD_inBuffer in{input.bytes, input.size, 0};
    ZSTD_outBuffer out{output.bytes, output.size, 0};
    const std::size_t status = ZSTD_decompressStream(context_.get(), &out, &in);
    input.skip(in.pos);
    output.skip(out.pos);
    switch (ZSTD_getErrorCode(status)) {
      case ZSTD_error_no_error:
        return status == 0 && input.size == 0 && input.isLast ? Result::Ended : Result::Continues;
      case ZSTD_error_frameParameter_windowTooLarge:
      case ZSTD_error_dictionary_wrong:
        return Result::Unsupported;
      case ZSTD_error_memory_allocation:
        return Result::OutOfMemory;
      default:
        return Result::Damaged;
    }
  }

 private:
  std::unique_ptr<ZSTD_DCtx, Deleter> context_{ZSTD_createDCtx()};
  bool isGood_ = context_ && ZSTD_isError(ZSTD_DCtx_setParameter(
                                 context_.get(), ZSTD_d_windowLogMax, kLargestWindowBits)) == 0;
};

// The library's levels for 1 to 9.
int libraryLevel(int level) {
  constexpr int kLevels[] = {1, 2, 3, 4, 5, 6, 8, 9, 12};
  return level == ZipLevelDefault ? ZSTD_CLEVEL_DEFAULT : kLevels[std::clamp(level, 1, 9) - 1];
}

class ZstandardEncoder : public Encoder {
 public:
  bool begin(int level, std::optional<std::size_t> size) override {
    ZSTD_CCtx* const context = context_.get();
    return context != nullptr && succeeds(ZSTD_CCtx_reset(context, ZSTD_reset_session_only)) &&
           succeeds(
               ZSTD_CCtx_setParameter(context, ZSTD_c_compressionLevel, libraryLevel(level))) &&
           (!size || succeeds(ZSTD_CCtx_setPledgedSrcSize(context, *size)));
  }

  bool append(Bytes& out, const Bytes& plain, bool isLast) override {
    ZSTD_inBuffer in{plain.data(), plain.size(), 0};
    for (bool isDone = false; !isDone;) {
      const std::size_t start = out.size();
      out.resize(start + std::min(ZSTD_CStreamOutSize(), ZSTD_compressBound(in.size - in.pos)));
      ZSTD_outBuffer space{out.data() + start, out.size() - start, 0};
      const std::size_t left =
          ZSTD_compressStream2(context_.get(), &space, &in, isLast ? ZSTD_e_end : ZSTD_e_continue);
      out.resize(start + space.pos);
      if (!succeeds(left)) return false;
      isDone = isLast ? left == 0 : in.pos == in.size;
    }
    return true;
  }

 private:
  static bool succeeds(std::size_t status) { return ZSTD_isError(status) == 0; }

  std::unique_ptr<ZSTD_CCtx, Deleter> context_{ZSTD_createCCtx()};
};

}  // namespace

MakeDecoder zstandardDecoder() {
  return [](const DecoderFacts&) -> std::unique_ptr<Decoder> {
    auto decoder = std::make_unique<ZstandardDecoder>();
    return decoder->isGood() ? std::move(decoder) : nullptr;
  };
}

MakeEncoder zstandardEncoder() {
  return []() -> std::unique_ptr<Encoder> { return std::make_unique<ZstandardEncoder>(); };
}

}  // namespace zip_engine
