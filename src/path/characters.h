#pragma once
// Stepping through path text by character, so that the second byte of a
// double-byte character is never taken for a separator or a dot.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/win32.h"

namespace FileSystem::Detail {

inline bool isSeparator(char c) { return c == '\\' || c == '/'; }

// Bytes of the character at `position`, which must lie inside the text.
inline std::size_t characterLength(std::string_view text, std::size_t position) {
  const bool pair =
      position + 1 < text.size() && IsDBCSLeadByte(static_cast<BYTE>(text[position])) != FALSE;
  return pair ? 2 : 1;
}

// Whether every character is one byte, so that a text can be searched from its
// end. Lead bytes have the highest bit set.
inline bool isSingleByte(std::string_view text) {
  std::uint64_t seen = 0;
  std::size_t i = 0;
  for (; i + sizeof(seen) <= text.size(); i += sizeof(seen)) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof(word));
    seen |= word;
  }
  for (; i < text.size(); ++i) seen |= static_cast<unsigned char>(text[i]);
  return (seen & 0x8080808080808080) == 0;
}

}  // namespace FileSystem::Detail
