#pragma once
// Deflate (RFC 1951) of streams.

#include <zlib.h>

#include <cstddef>

namespace zip_engine {

// Deflates a stream of any length.
class StreamDeflater {
 public:
  explicit StreamDeflater(int level);
  StreamDeflater(const StreamDeflater&) = delete;
  StreamDeflater& operator=(const StreamDeflater&) = delete;
  ~StreamDeflater();

  // Hands deflated bytes to `take(bytes, size)`, which gives false to stop; at
  // the `last` call all that is left of them.
  template <typename Take>
  bool write(const unsigned char* plain, std::size_t size, bool last, Take take) {
    stream_.next_in = const_cast<unsigned char*>(plain);
    stream_.avail_in = static_cast<uInt>(size);
    int status = good_ ? Z_OK : Z_STREAM_ERROR;
    do {
      if (status != Z_OK && status != Z_BUF_ERROR) return false;
      stream_.next_out = block_;
      stream_.avail_out = sizeof(block_);
      status = deflate(&stream_, last ? Z_FINISH : Z_NO_FLUSH);
      if (!take(block_, sizeof(block_) - stream_.avail_out)) return false;
    } while (last ? status != Z_STREAM_END : stream_.avail_in != 0 || stream_.avail_out == 0);
    return true;
  }

 private:
  z_stream stream_{};
  bool good_ = false;
  unsigned char block_[64 << 10];
};

}  // namespace zip_engine
