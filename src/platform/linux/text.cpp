// Zero-terminated texts.

#include <cstring>
#include <string_view>

#include "platform/linux/case_folding.h"
#include "platform/linux/win32_linux.h"
#include "platform/utf8.h"

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
  std::string_view a(first);
  std::string_view b(second);
  while (!a.empty() && !b.empty()) {
    const char32_t x = platform::native::foldCase(platform::takeUtf8(a));
    const char32_t y = platform::native::foldCase(platform::takeUtf8(b));
    if (x != y) return x < y ? -1 : 1;
  }
  return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

// UTF-8 has no lead bytes of double-byte characters.
BOOL IsDBCSLeadByte(BYTE) { return FALSE; }
