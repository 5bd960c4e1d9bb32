// Zero-terminated texts.

#include <string_view>

#include "platform/linux/names/case_folding.h"
#include "platform/linux/win32_linux.h"
#include "platform/utf8.h"

// A null text is less than any other.
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
