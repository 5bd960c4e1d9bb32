// LZMA and XZ, both with liblzma.

#include <lzma.h>

#include <algorithm>
#include <limits>

#include "zip/engine/codec/optional_codecs.h"
#include "zip/engine/container/format.h"

namespace zip_engine {
namespace {

// What the library needs besides the window.
constexpr std::uint64_t kMemoryLimit = kLargestWindow + (1 << 20);

class LibraryDecoder : public Decoder {
 public:
  LibraryDecoder() = default;
  LibraryDecoder(const LibraryDecoder&) = delete;
  LibraryDecoder& operator=(const LibraryDecoder&) = delete;
  ~LibraryDecoder() override { lzma_end(&stream_); }

  Result decode(DecoderInput& input, DecoderOutput& output) override {
    stream_.next_in = input.bytes;
    stream_.avail_in = input.size;
    stream_.next_out = output.bytes;
    stream_.avail_out = output.size;
    const lzma_ret status = lzma_code(&stream_, LZMA_RUN);
    input.skip(input.size - stream_.avail_in);
    output.skip(output.size - stream_.avail_out);
    switch (status) {
      case LZMA_OK:
        return Result::Continues;
      case LZMA_STREAM_END:
        return Result::Ended;
      case LZMA_MEMLIMIT_ERROR:
      case LZMA_OPTIONS_ERROR:
      case LZMA_FORMAT_ERROR:
        return Result::Unsupported;
      case LZMA_MEM_ERROR:
        return Result::OutOfMemory;
      default:
        return Result::Damaged;
    }
  }

 protected:
  lzma_stream stream_ = LZMA_STREAM_INIT;
};

class XzDecoder : public LibraryDecoder {
 public:
  bool begin() { return lzma_stream_decoder(&stream_, kMemoryLimit, 0) == LZMA_OK; }
};

// Stored bytes begin with the version of the packer and the size of the properties, two bytes each,
// and the properties: a byte, and four of the dictionary's size. The library reads files that begin
// with the properties and the size of the content, in eight bytes.
class LzmaDecoder : public LibraryDecoder {
 public:
  explicit LzmaDecoder(const DecoderFacts& facts)
      : plainSize_(facts.plainSize), hasEndMark_((facts.flags & kFlagLzmaEndMark) != 0) {}

  bool begin() { return lzma_alone_decoder(&stream_, kMemoryLimit) == LZMA_OK; }

  Result decode(DecoderInput& input, DecoderOutput& output) override {
    if (header_.size() < kHeaderSize) {
      const std::size_t count = std::min(kHeaderSize - header_.size(), input.size);
      header_.insert(header_.end(), input.bytes, input.bytes + count);
      input.skip(count);
      return header_.size() < kHeaderSize ? Result::Continues : passHeader(output);
    }
    return LibraryDecoder::decode(input, output);
  }

 private:
  static constexpr std::size_t kPropertiesSize = 5;
  static constexpr std::size_t kHeaderSize = 4 + kPropertiesSize;

  // Without space for plain bytes the library would not read the header, which has none.
  Result passHeader(DecoderOutput& output) {
    if (load16(header_.data() + 2) != kPropertiesSize) return Result::Damaged;
    // No match is farther away than the content is long.
    const std::uint64_t dictionary =
        std::min<std::uint64_t>(load32(header_.data() + 5), std::max(plainSize_, kLeastDictionary));
    if (dictionary > kLargestWindow) return Result::Unsupported;
    Bytes head{header_[4]};
    append32(head, static_cast<std::uint32_t>(dictionary));
    append64(head, hasEndMark_ ? std::numeric_limits<std::uint64_t>::max() : plainSize_);
    DecoderInput input{head.data(), head.size()};
    return LibraryDecoder::decode(input, output);
  }

  static constexpr std::uint64_t kLeastDictionary = 4096;

  const std::uint64_t plainSize_;
  const bool hasEndMark_;
  Bytes header_;
};

template <typename Kind, typename... Arguments>
std::unique_ptr<Decoder> make(const Arguments&... arguments) {
  auto decoder = std::make_unique<Kind>(arguments...);
  return decoder->begin() ? std::move(decoder) : nullptr;
}

}  // namespace

MakeDecoder lzmaDecoder() {
  return [](const DecoderFacts& facts) { return make<LzmaDecoder>(facts); };
}

MakeDecoder xzDecoder() {
  return [](const DecoderFacts&) { return make<XzDecoder>(); };
}

}  // namespace zip_engine
