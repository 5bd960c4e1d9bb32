// Escaping text for XML.

#include <filesystem/xml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/large_memory.h"
#include "xml/byte_block.h"

namespace FileSystem::Xml {
namespace {

// What toXml puts in the place of a byte: the byte itself, an entity, or nothing.
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

// The bytes that toXml replaces or drops. `&` and the apostrophe, `<` and `>`, and
// tab and carriage return differ in one bit each. 0 is kept, but so rare that it
// may be among them.
Detail::Truths isReplaced(Detail::Bytes bytes) {
  const Detail::Truths space = ((bytes & 0xFB) == '\t') | (bytes == '\n');
  return ((bytes | 0x01) == '\'') | ((bytes | 0x02) == '>') | (bytes == '"') |
         ((bytes | reinterpret_cast<Detail::Bytes>(space)) < ' ');
}

// Writes what stands for some bytes, and whatever behind it, as much as a
// replacement holds. Gives the end of what counts.
char* escapeBytes(std::string_view in, char* out) {
  for (const char c : in) {
    const Replacement& replacement = kReplacements[static_cast<unsigned char>(c)];
    std::memcpy(out, replacement.text, sizeof(replacement.text));
    out += replacement.size;
  }
  return out;
}

// The same for a block in front of another one; writes a block behind it.
char* escapeBlock(const char* in, char* out) {
  // Copying what lies between more than these takes longer than byte by byte.
  constexpr int kFew = 4;
  std::uint64_t replaced = Detail::testBlock(isReplaced, in);
  std::memcpy(out, in, Detail::kBlock);
  std::size_t done = 0;
  for (int count = 0; replaced != 0; replaced &= replaced - 1) {
    if (++count > kFew) return escapeBytes({in + done, Detail::kBlock - done}, out);
    const std::size_t at = static_cast<std::size_t>(std::countr_zero(replaced));
    out = escapeBytes({in + at, 1}, out + (at - done));
    done = at + 1;
    // Always as much, since an exact size would have to be branched on.
    std::memcpy(out, in + done, Detail::kBlock);
  }
  return out + (Detail::kBlock - done);
}

// By how much a byte grows; what is dropped counts as kept. In a form that the
// compiler can compute for many bytes at once.
constexpr int growthOf(char c) {
  return 3 * ((c | 0x02) == '>') + 4 * (c == '&') + 5 * ((c == '\'') | (c == '"'));
}

// No less than the size of what toXml makes of a text.
std::size_t escapedSize(std::string_view text) {
  // The growth of so many bytes fits into one.
  constexpr std::size_t kStep = 32;
  std::size_t size = text.size();
  for (std::size_t start = 0; start < text.size(); start += kStep) {
    unsigned char growth = 0;
    for (const char c : text.substr(start, kStep)) {
      growth = static_cast<unsigned char>(growth + growthOf(c));
    }
    size += growth;
  }
  return size;
}

// Appends a piece. Once the room is too small even for a rest without
// replacements, the rest is measured, and is never again.
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
  // Pieces are made in a buffer that stays in the cache; filling the result in
  // place would mean to zero it first.
  constexpr std::size_t kPiece = 2048;
  constexpr std::size_t kLastBlocks = 2 * Detail::kBlock;
  std::array<char, kPiece + kLastBlocks * kLongestReplacement + Detail::kBlock> buffer;
  std::string result;
  platform::reserveForFilling(result, text.size() + text.size() / 8);
  std::string_view rest = text;
  std::size_t made = 0;
  while (rest.size() >= kLastBlocks) {
    char* const end = escapeBlock(rest.data(), buffer.data() + made);
    made = static_cast<std::size_t>(end - buffer.data());
    rest.remove_prefix(Detail::kBlock);
    if (made >= kPiece) {
      append(result, {buffer.data(), made}, rest);
      made = 0;
    }
  }
  const char* const end = escapeBytes(rest, buffer.data() + made);
  append(result, {buffer.data(), end}, {});
  return result;
}

}  // namespace FileSystem::Xml
