// Escaping text for XML.

#include <filesystem/xml.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/large_memory.h"

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

using Word = std::uint64_t;

constexpr Word inAllBytes(unsigned char value) { return Word{value} * 0x0101010101010101; }

// Not zero if a byte of the word is zero.
constexpr Word hasZero(Word word) { return (word - inAllBytes(0x01)) & ~word & inAllBytes(0x80); }

// Whether toXml may have to replace one of eight bytes. `<` and `>`, and `&` and
// the apostrophe, differ in one bit each.
constexpr bool mayReplace(Word bytes) {
  return (hasZero(bytes & inAllBytes(0xE0)) | hasZero(bytes ^ inAllBytes('"')) |
          hasZero((bytes | inAllBytes(0x01)) ^ inAllBytes('\'')) |
          hasZero((bytes | inAllBytes(0x02)) ^ inAllBytes('>'))) != 0;
}

}  // namespace

std::string toXml(const std::string& text) {
  // Escaped piece by piece in a buffer that holds the longest result of a piece,
  // and what is written beyond a replacement.
  constexpr std::size_t kPiece = 2048;
  constexpr std::size_t kLongest = std::string_view("&apos;").size();
  std::array<char, kPiece * kLongest + sizeof(Replacement::text)> buffer;
  std::string result;
  platform::reserveForFilling(result, text.size() + text.size() / 8);
  for (std::size_t start = 0; start < text.size(); start += kPiece) {
    const char* in = text.data() + start;
    const char* const end = in + std::min(kPiece, text.size() - start);
    char* out = buffer.data();
    const auto escape = [&](std::ptrdiff_t count) {
      for (; count > 0; --count) {
        const Replacement& replacement = kReplacements[static_cast<unsigned char>(*in++)];
        std::memcpy(out, replacement.text, sizeof(replacement.text));
        out += replacement.size;
      }
    };
    while (end - in >= static_cast<std::ptrdiff_t>(sizeof(Word))) {
      Word word;
      std::memcpy(&word, in, sizeof(word));
      if (mayReplace(word)) {
        escape(sizeof(word));
      } else {
        std::memcpy(out, &word, sizeof(word));
        in += sizeof(word);
        out += sizeof(word);
      }
    }
    escape(end - in);
    result.append(buffer.data(), out);
  }
  return result;
}

}  // namespace FileSystem::Xml
