// Streams of another compressor in a row, read back by its own inflater.

#include "zip/engine/codec/deflate_blocks.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <random>
#include <utility>

#include "support/noise.h"
#include "support/sanitized.h"
#include "zip/engine/codec/inflating_decoder.h"

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

// Inflates a raw stream. Returns "" if it ends with its bytes, else the message of zlib, if any.
std::string inflated(Bytes& raw, std::string& plain) {
  z_stream stream{};
  inflateInit2(&stream, -MAX_WBITS);
  stream.next_in = raw.data();
  stream.avail_in = static_cast<uInt>(raw.size());
  stream.next_out = reinterpret_cast<Bytef*>(plain.data());
  stream.avail_out = static_cast<uInt>(plain.size());
  const bool isWhole = inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.avail_in == 0;
  const std::string message = stream.msg == nullptr ? "incomplete" : stream.msg;
  plain.resize(stream.total_out);
  inflateEnd(&stream);
  return isWhole ? "" : message;
}

// Inflates a raw stream in blocks. Reports whether it ends.
bool isInflatedInBlocks(const Bytes& raw, std::string& plain) {
  constexpr std::size_t kBlock = 20'000;
  plain.clear();
  const std::unique_ptr<Decoder> decoder = makeInflatingDecoder({});
  DecoderInput input{raw.data(), raw.size(), true};
  for (;;) {
    const std::size_t done = plain.size();
    plain.resize(done + kBlock);
    DecoderOutput output{reinterpret_cast<unsigned char*>(plain.data()) + done, kBlock};
    const Decoder::Result result = decoder->decode(input, output);
    plain.resize(plain.size() - output.size);
    if (result != Decoder::Result::Continues) return result == Decoder::Result::Ended;
    if (plain.size() == done) return false;
  }
}

// Texts whose streams end at every bit of a byte, as do blocks that a stored one follows.
std::vector<std::string> texts() {
  std::mt19937 random(7);
  std::vector<std::string> result = {"", "a", "", ""};
  // Every literal and every length, in codes of each kind.
  for (std::size_t i = 0; i < 259; ++i) result[2] += static_cast<char>(i) + std::string(i, 'z');
  // Frequencies that need the longest codes.
  for (std::size_t count = 1, last = 1; count < 3000; last = std::exchange(count, count + last)) {
    result[3].append(count, static_cast<char>(count % 251));
  }
  for (std::size_t size = 1; size < 40; ++size) {
    std::string text(size * size * 41, '\0');
    for (char& c : text) c = static_cast<char>('a' + random() % size);
    result.push_back(text + support::noise(size < 20 ? 0 : 30'000));
  }
  result.push_back(support::noise(70'000));
  return result;
}

}  // namespace

TEST(DeflateBlocks, StreamsInARowAreOne) {
  for (const Maker& maker : kMakers) {
    SCOPED_TRACE(maker.name);
    // The bits that fill the last byte of a stream may have any value.
    Bytes row = {0x03, 0xFC};
    ASSERT_TRUE(continueStream(row, 0));
    std::string whole;
    for (const std::string& text : texts()) {
      const std::size_t start = row.size();
      appendDeflated(row, text, maker);
      ASSERT_TRUE(continueStream(row, start));
      appendStoredBlocks(row, reinterpret_cast<const unsigned char*>(text.data()), text.size());
      whole += text + text;
    }
    appendLastBlock(row);
    std::string plain(whole.size() + 1, '\0');
    EXPECT_EQ(inflated(row, plain), "");
    EXPECT_TRUE(plain == whole);
    EXPECT_TRUE(isInflatedInBlocks(row, plain));
    EXPECT_TRUE(plain == whole);
  }
}

// Streams that are cut or have one bit changed. zlib also refuses distances and incomplete codes. The
// decoder in blocks takes the latter if they are not used where they are not defined.
TEST(DeflateBlocks, DamagedStreamsAreRefused) {
  const std::string errors =
      "invalid block type, invalid bit length repeat, invalid literal/length code,"
      " invalid distance code";
  // Dynamic blocks whose code lengths have a code with too many members, and one that is incomplete
  // and used where it is not defined.
  for (Bytes stream : {Bytes{5, 0xCA, 0x81, 8, 0, 0, 0, 0, 0x10, 0xFF, 0xD5, 2, 2},
                       Bytes{5, 0xCD, 1, 1, 0, 0, 0, 0, 0x20, 0xFC, 0xAB, 0x66, 0x10}}) {
    EXPECT_FALSE(continueStream(stream, 0));
  }
  const std::string text = texts()[2] + (support::kSanitized ? "" : texts()[20] + texts().back());
  // Of zlib, and for streams that end before their bytes.
  const std::string skipped =
      "invalid literal/lengths set, invalid distances set, invalid code lengths set, incomplete";
  std::string plain;
  std::string inBlocks;
  for (const Maker& maker : kMakers) {
    Bytes whole;
    appendDeflated(whole, text, maker);
    for (std::size_t bit = 0; bit < 8 * whole.size(); bit += 1 + bit / 128) {
      Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(bit / 8));
      EXPECT_FALSE(isInflatedInBlocks(cut, inBlocks)) << maker.name << bit;
      EXPECT_FALSE(continueStream(cut, 0)) << maker.name << bit;
      Bytes changed = whole;
      changed[bit / 8] ^= static_cast<unsigned char>(1 << bit % 8);
      plain.resize(1 << 20);
      const std::string error = inflated(changed, plain);
      if (skipped.find(error) == std::string::npos || error.empty()) {
        EXPECT_EQ(isInflatedInBlocks(changed, inBlocks), error.empty())
            << maker.name << bit << error;
        EXPECT_TRUE(!error.empty() || inBlocks == plain) << maker.name << bit;
      }
      if (errors.find(error) != std::string::npos) {
        EXPECT_EQ(continueStream(changed, 0), error.empty()) << maker.name << bit;
      }
    }
  }
}
