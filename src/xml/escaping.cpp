// Escaping in blocks.
//
// Most bytes of a text are kept. Testing byte by byte with a branch costs a misprediction for most
// of the others. Copying a replacement of fixed size for each byte has no branch, but handles one
// byte in a nanosecond, where a plain copy handles more than ten.
//
// So 64 bytes are tested at a time, which gives a bit for each byte that is replaced. The block is
// copied unchanged; then each replacement, from left to right, is written over its byte, and the 64
// bytes that follow the byte in the input are copied after it:
//
//   in     a<b&cd...            bits 1 and 3
//   out    a<b&cd...            the block, copied
//          a&lt;b&cd...         `<` replaced, the rest copied again
//          a&lt;b&amp;cd...     `&` replaced, the rest copied again
//
// All copies have a fixed size, so that none is branched on; they write beyond the end of the
// result, where the next one overwrites them. In a block with many replacements the copies would
// cost more than they save, and the rest of it is escaped byte by byte.

#include <filesystem/xml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/compiler.h"
#include "platform/large_memory.h"
#include "xml/byte_block.h"

namespace FileSystem::Xml {
namespace {

// The text that replaces a byte: the byte itself, an entity, or nothing.
struct Replacement {
  char text[8] = {};
  std::size_t size = 0;
};

constexpr std::array<Replacement, 256> makeReplacements() {
  std::array<Replacement, 256> table{};
  for (std::size_t c = 0; c < table.size(); ++c) {
    const bool keeps = c == 0 || c >= ' ' || c == '\t' || c == '\n' || c == '\r';
    table[c].text[0] = static_cast<char>(c);
    table[c].size = keeps ? 1 : 0;
  }
  const auto replace = [&](char c, std::string_view text) {
    Replacement& replacement = table[static_cast<unsigned char>(c)];
    text.copy(replacement.text, text.size());
    replacement.size = text.size();
  };
  replace('<', "&lt;");
  replace('>', "&gt;");
  replace('&', "&amp;");
  replace('\'', "&apos;");
  replace('"', "&quot;");
  return table;
}

constexpr std::array<Replacement, 256> kReplacements = makeReplacements();

constexpr std::size_t kLongestReplacement = std::string_view("&apos;").size();

// Tests for bytes that are replaced or dropped. `&` and `'`, `<` and `>`, and tab and carriage
// return differ in one bit each. The test holds for 0 too, which its table entry keeps: it is rare,
// and excluding it would cost an instruction.
Detail::Truths isReplaced(Detail::Bytes bytes) {
  const Detail::Truths space = ((bytes & 0xFB) == '\t') | (bytes == '\n');
  return ((bytes | 0x01) == '\'') | ((bytes | 0x02) == '>') | (bytes == '"') |
         ((bytes | platform::bytesOf(space)) < ' ');
}

// Writes the replacements of all bytes and returns their end. Overwrites up to a replacement's size
// after it.
char* escapeBytes(std::string_view in, char* out) {
  for (const char c : in) {
    const Replacement& replacement = kReplacements[static_cast<unsigned char>(c)];
    std::memcpy(out, replacement.text, sizeof(replacement.text));
    out += replacement.size;
  }
  return out;
}

// Does the same for a block, which another block must follow in the input. Overwrites up to a block
// after the result.
char* escapeBlock(const char* in, char* out) {
  // With more replacements, bytes are faster one by one.
  constexpr int kFew = 4;
  std::uint64_t replaced = Detail::testBlock(isReplaced, in);
  std::memcpy(out, in, Detail::kBlock);
  std::size_t done = 0;
  for (int count = 0; replaced != 0; replaced &= replaced - 1) {
    if (++count > kFew) return escapeBytes({in + done, Detail::kBlock - done}, out);
    const std::size_t at = static_cast<std::size_t>(std::countr_zero(replaced));
    out = escapeBytes({in + at, 1}, out + (at - done));
    done = at + 1;
    std::memcpy(out, in + done, Detail::kBlock);
  }
  return out + (Detail::kBlock - done);
}

// Returns the number of bytes that a byte grows by; a dropped byte counts as kept. Has no branches,
// so that the compiler can vectorise it.
constexpr int growthOf(char c) {
  return 3 * ((c | 0x02) == '>') + 4 * (c == '&') + 5 * ((c == '\'') | (c == '"'));
}

// Returns an upper bound of the size of the escaped text.
std::size_t escapedSize(std::string_view text) {
  // The growth of this many bytes fits into a byte.
  constexpr std::size_t kStep = 32;
  std::size_t size = text.size();
  while (!text.empty()) {
    const std::string_view step = text.substr(0, kStep);
    unsigned char growth = 0;
    for (const char c : step) growth = static_cast<unsigned char>(growth + growthOf(c));
    size += growth;
    text.remove_prefix(step.size());
  }
  return size;
}

// Appends `piece`, with `rest` still to be escaped. If the capacity is too small even for a rest
// without replacements, measures the rest and reserves that much, once.
void append(std::string& result, std::string_view piece, std::string_view rest) {
  if (result.capacity() - result.size() < piece.size() + rest.size()) {
    std::string larger;
    platform::reserveForFilling(larger, result.size() + piece.size() + escapedSize(rest));
    larger.append(result);
    result = std::move(larger);
  }
  result.append(piece);
}

}  // namespace

std::string toXml(const std::string& text) {
  // Pieces are escaped in a buffer that remains in the cache. A string would have to be zero-filled
  // before it could be written to in place.
  constexpr std::size_t kPiece = 2048;
  constexpr std::size_t kLastBlocks = 2 * Detail::kBlock;
  std::array<char, kPiece + kLastBlocks * kLongestReplacement + Detail::kBlock> buffer;
  std::string result;
  platform::reserveForFilling(result, text.size() + text.size() / 8);
  std::string_view rest = text;
  std::size_t filled = 0;
  while (rest.size() >= kLastBlocks) {
    char* const end = escapeBlock(rest.data(), buffer.data() + filled);
    filled = static_cast<std::size_t>(end - buffer.data());
    rest.remove_prefix(Detail::kBlock);
    if (filled >= kPiece) {
      append(result, {buffer.data(), filled}, rest);
      filled = 0;
    }
  }
  const char* const end = escapeBytes(rest, buffer.data() + filled);
  append(result, {buffer.data(), end}, {});
  return result;
}

}  // namespace FileSystem::Xml
