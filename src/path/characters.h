#pragma once
// Iterating over path text by character. In a double-byte code page the second byte of a character
// can equal a separator or a dot.

#include <cstddef>
#include <string_view>

#include "platform/win32.h"

namespace FileSystem::Detail {

constexpr bool isSeparator(char c) { return c == '\\' || c == '/'; }

// Returns the number of bytes of the character at `position`, which must be inside the text.
inline std::size_t characterLength(std::string_view text, std::size_t position) {
  const bool pair =
      position + 1 < text.size() && IsDBCSLeadByte(static_cast<BYTE>(text[position])) != FALSE;
  return pair ? 2 : 1;
}

// Calls `test` with the position of each character from `start` on until it returns true. Returns
// that position, or the size of the text.
template <typename Test>
std::size_t findCharacter(std::string_view text, std::size_t start, Test test) {
  std::size_t i = start;
  while (i < text.size() && !test(i)) i += characterLength(text, i);
  return i;
}

}  // namespace FileSystem::Detail
