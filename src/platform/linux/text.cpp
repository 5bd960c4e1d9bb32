// Zero-terminated texts.

#include <cstring>

#include "platform/linux/win32_linux.h"

namespace {

int lowered(unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }

}  // namespace

char* lstrcpynA(char* target, const char* source, int size) {
  if (size <= 0) return target;
  const std::size_t count = strnlen(source, static_cast<std::size_t>(size) - 1);
  std::memcpy(target, source, count);
  target[count] = '\0';
  return target;
}

int lstrlenA(const char* text) { return text == nullptr ? 0 : static_cast<int>(std::strlen(text)); }

// A null text is less than any other.
int lstrcmpA(const char* first, const char* second) {
  if (first == nullptr || second == nullptr) return (first != nullptr) - (second != nullptr);
  return std::strcmp(first, second);
}

int lstrcmpiA(const char* first, const char* second) {
  if (first == nullptr || second == nullptr) return (first != nullptr) - (second != nullptr);
  for (;; ++first, ++second) {
    const int difference =
        lowered(static_cast<unsigned char>(*first)) - lowered(static_cast<unsigned char>(*second));
    if (difference != 0 || *first == '\0') return difference;
  }
}

// UTF-8 has no double-byte characters in this sense.
BOOL IsDBCSLeadByte(BYTE) { return FALSE; }
