// Streams of another compressor in a row, read back by its own inflater.

#include "zip/engine/deflate_blocks.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

#include "support/noise.h"

using namespace zip_engine;

namespace {

struct Maker {
  const char* name;
  int level;
  int strategy;
};

// Stored, fixed and dynamic blocks, and codes with few or no distances.
constexpr Maker kMakers[] = {{"stored", 0, Z_DEFAULT_STRATEGY}, {"fixed", 6, Z_FIXED},
                             {"fast", 1, Z_DEFAULT_STRATEGY},   {"best", 9, Z_DEFAULT_STRATEGY},
                             {"no matches", 6, Z_HUFFMAN_ONLY}, {"runs", 6, Z_RLE}};

void appendDeflated(Bytes& out, const std::string& plain, const Maker& maker) {
  z_stream stream{};
  ASSERT_EQ(deflateInit2(&stream, maker.level, Z_DEFLATED, -MAX_WBITS, 8, maker.strategy), Z_OK);
  const std::size_t start = out.size();
  out.resize(start + deflateBound(&stream, static_cast<uLong>(plain.size())));
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = out.data() + start;
  stream.avail_out = static_cast<uInt>(out.size() - start);
  ASSERT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  out.resize(start + stream.total_out);
  deflateEnd(&stream);
}

// Inflates a raw stream of `plain`, as one with zlib's header and checksum.
bool inflatesTo(const Bytes& raw, const std::string& plain) {
  Bytes stream{0x78, 0x9C};
  stream.insert(stream.end(), raw.begin(), raw.end());
  const uLong sum =
      adler32(1, reinterpret_cast<const Bytef*>(plain.data()), static_cast<uInt>(plain.size()));
  for (const int shift : {24, 16, 8, 0}) stream.push_back(static_cast<unsigned char>(sum >> shift));
  std::string result(plain.size() + 1, '\0');
  uLong size = static_cast<uLong>(result.size());
  const int status = uncompress(reinterpret_cast<Bytef*>(result.data()), &size, stream.data(),
                                static_cast<uLong>(stream.size()));
  return status == Z_OK && size == plain.size();
}

// Texts whose streams end at every bit of a byte.
std::vector<std::string> texts() {
  std::mt19937 random(7);
  std::vector<std::string> result = {"", "a", std::string(200'000, 'z')};
  for (std::size_t size = 1; size < 40; ++size) {
    std::string text(size * size * 41, '\0');
    for (char& c : text) c = static_cast<char>('a' + random() % size);
    result.push_back(text);
  }
  result.push_back(support::noise(70'000));
  return result;
}

}  // namespace

TEST(DeflateBlocks, StreamsInARowAreOne) {
  for (const Maker& maker : kMakers) {
    SCOPED_TRACE(maker.name);
    Bytes row;
    std::string whole;
    for (const std::string& text : texts()) {
      const std::size_t start = row.size();
      appendDeflated(row, text, maker);
      ASSERT_TRUE(continueStream(row, start));
      appendStoredBlocks(row, reinterpret_cast<const unsigned char*>(text.data()), text.size());
      whole += text + text;
    }
    appendLastBlock(row);
    EXPECT_TRUE(inflatesTo(row, whole));
  }
}

TEST(DeflateBlocks, CutStreamsAreRefused) {
  const std::string text = texts().back() + std::string(1000, 'x') + texts()[20];
  for (const Maker& maker : kMakers) {
    SCOPED_TRACE(maker.name);
    Bytes stream;
    appendDeflated(stream, text, maker);
    for (std::size_t size = 0; size < stream.size(); size += 1 + stream.size() / 97) {
      Bytes cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_FALSE(continueStream(cut, 0)) << size;
    }
  }
}
