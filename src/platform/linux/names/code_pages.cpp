// Both code pages are UTF-8. An ill-formed byte is converted to one of U+DC80 to U+DCFF, which
// well-formed UTF-8 never contains, so every text survives the conversion to UTF-16 and back.

#include <cstring>
#include <string>
#include <string_view>

#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"
#include "platform/utf8.h"

namespace platform::native {
namespace {

bool isKnown(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_OEMCP || codePage == CP_UTF8;
}

void appendUtf16(std::u16string& out, char32_t value) {
  if (value < 0x10000) {
    out += static_cast<char16_t>(value);
  } else {
    out += static_cast<char16_t>(0xD7C0 + (value >> 10));
    out += static_cast<char16_t>(0xDC00 + (value & 0x3FF));
  }
}

char32_t takeUtf16(std::u16string_view& text) {
  const char16_t first = text[0];
  const bool isPair = first >= 0xD800 && first <= 0xDBFF && text.size() > 1 && text[1] >= 0xDC00 &&
                      text[1] <= 0xDFFF;
  const char32_t value =
      isPair ? 0x10000 + ((first - 0xD800U) << 10) + (text[1] - 0xDC00U) : char32_t{first};
  text.remove_prefix(isPair ? 2 : 1);
  return value;
}

// Returns the length of a text, and copies it if `size` is not 0. Fails if the text does not fit.
template <typename Text, typename Char>
int deliver(const Text& text, Char* buffer, int size) {
  if (size == 0) return static_cast<int>(text.size());
  if (buffer == nullptr || text.size() > static_cast<std::size_t>(size)) {
    return fail(ERROR_INSUFFICIENT_BUFFER);
  }
  text.copy(buffer, text.size());
  return static_cast<int>(text.size());
}

}  // namespace
}  // namespace platform::native

using namespace platform::native;

UINT GetOEMCP() { return CP_UTF8; }

int MultiByteToWideChar(UINT codePage, DWORD, const char* text, int length, WCHAR* buffer,
                        int size) {
  if (!isKnown(codePage) || text == nullptr || length == 0 || size < 0) {
    return fail(ERROR_INVALID_PARAMETER);
  }
  std::string_view rest(text,
                        length < 0 ? std::strlen(text) + 1 : static_cast<std::size_t>(length));
  std::u16string wide;
  wide.reserve(rest.size());
  while (!rest.empty()) appendUtf16(wide, platform::takeUtf8(rest));
  return deliver(wide, buffer, size);
}

int WideCharToMultiByte(UINT codePage, DWORD, const WCHAR* text, int length, char* buffer, int size,
                        const char*, BOOL* usedDefault) {
  if (!isKnown(codePage) || text == nullptr || length == 0 || size < 0) {
    return fail(ERROR_INVALID_PARAMETER);
  }
  if (usedDefault != nullptr) *usedDefault = FALSE;
  std::u16string_view rest(text, length < 0 ? std::char_traits<char16_t>::length(text) + 1
                                            : static_cast<std::size_t>(length));
  std::string narrow;
  narrow.reserve(rest.size());
  while (!rest.empty()) platform::appendUtf8(narrow, takeUtf16(rest));
  return deliver(narrow, buffer, size);
}
