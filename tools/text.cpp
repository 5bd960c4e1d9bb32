#include "text.h"

#include <array>
#include <cstdio>

namespace {

bool actsOnTerminal(char32_t c) {
  const bool isControl = c < 0x20 || (c >= 0x7F && c < 0xA0);
  const bool breaksLineOrSetsDirection =
      (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
  return isControl || breaksLineOrSetsDirection;
}

}  // namespace

std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byteAt(position);
  const std::size_t start = position++;
  if (lead < 0x80) return lead;
  if (lead < 0xC2 || lead > 0xF4) return std::nullopt;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (text.size() - start < length) return std::nullopt;
  char32_t value = lead & (0x7FU >> length);
  for (std::size_t i = start + 1; i < start + length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return std::nullopt;
    value = value << 6 | (byteAt(i) & 0x3FU);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = value >= 0xD800 && value < 0xE000;
  if (value < kSmallest[length] || value > 0x10FFFF || isSurrogate) return std::nullopt;
  position = start + length;
  return value;
}

std::string printable(std::string_view text) {
  std::string result;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const auto c = nextCodePoint(text, position);
    if (!c || actsOnTerminal(*c)) {
      result += '?';
    } else {
      result += text.substr(start, position - start);
    }
  }
  return result;
}

std::string inQuotes(std::string_view text) { return "'" + printable(text) + "'"; }

std::string_view fitting(std::string_view text, std::size_t columns) {
  std::size_t position = 0;
  while (position < text.size()) {
    std::size_t next = position;
    const auto c = nextCodePoint(text, next);
    const std::size_t width = c && *c < 0x80 ? 1 : 2;
    if (width > columns) break;
    columns -= width;
    position = next;
  }
  return text.substr(0, position);
}

std::string jsonString(std::string_view text) {
  std::string result = "\"";
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const auto c = nextCodePoint(text, position);
    if (!c) {
      result += "\\ufffd";
    } else if (*c == '"' || *c == '\\') {
      result += '\\';
      result += static_cast<char>(*c);
    } else if (actsOnTerminal(*c)) {
      char escape[8];
      std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(*c));
      result += escape;
    } else {
      result += text.substr(start, position - start);
    }
  }
  return result + '"';
}

std::string counted(std::size_t count, const char* singular, const char* plural) {
  return std::to_string(count) + ' ' + (count == 1 ? singular : plural);
}
