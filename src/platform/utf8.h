#pragma once
// Decoding, encoding and validating UTF-8 (RFC 3629).

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {

// An ill-formed byte is decoded as this base plus the byte: one of U+DC80 to U+DCFF, which
// well-formed text never holds.
inline constexpr char32_t kIllFormedBase = 0xDC00;

// Removes one well-formed sequence, or else one ill-formed byte, from the front of a text that is
// not empty, and returns the character.
inline char32_t takeUtf8(std::string_view& text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  std::size_t length = 1;
  char32_t value = lead;
  if (lead >= 0x80) {
    length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    value = lead & (0x7FU >> length);
    bool good = lead >= 0xC2 && lead <= 0xF4 && length <= text.size();
    for (std::size_t i = 1; good && i < length; ++i) {
      good = (byte(i) & 0xC0) == 0x80;
      value = value << 6 | (byte(i) & 0x3FU);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (!good || value < kLeast[length] || value > 0x10FFFF || isSurrogate) {
      length = 1;
      value = kIllFormedBase + lead;
    }
  }
  text.remove_prefix(length);
  return value;
}

// Appends what takeUtf8() returned.
inline void appendUtf8(std::string& out, char32_t value) {
  const auto add = [&](char32_t byte) { out += static_cast<char>(byte); };
  if (value < 0x80) {
    add(value);
  } else if (value >= kIllFormedBase + 0x80 && value <= kIllFormedBase + 0xFF) {
    add(value - kIllFormedBase);
  } else if (value < 0x800) {
    add(0xC0 | value >> 6);
    add(0x80 | (value & 0x3F));
  } else if (value < 0x10000) {
    add(0xE0 | value >> 12);
    add(0x80 | (value >> 6 & 0x3F));
    add(0x80 | (value & 0x3F));
  } else {
    add(0xF0 | value >> 18);
    add(0x80 | (value >> 12 & 0x3F));
    add(0x80 | (value >> 6 & 0x3F));
    add(0x80 | (value & 0x3F));
  }
}

inline bool isAscii(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  const auto eightAt = [&](std::size_t at) {
    std::uint64_t bits;
    std::memcpy(&bits, text.data() + at, sizeof(bits));
    return bits;
  };
  const std::size_t size = text.size();
  std::uint64_t bits = 0;
  if (size < sizeof(bits)) {
    for (const char c : text) bits |= static_cast<std::uint64_t>(c);
    return (bits & kHighBits) == 0;
  }
  for (std::size_t at = 0; at + sizeof(bits) <= size; at += sizeof(bits)) bits |= eightAt(at);
  // The last eight may overlap with those before them.
  return ((bits | eightAt(size - sizeof(bits))) & kHighBits) == 0;
}

inline bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const char32_t value = takeUtf8(text);
    if (value >= 0xD800 && value <= 0xDFFF) return false;
  }
  return true;
}

}  // namespace platform
