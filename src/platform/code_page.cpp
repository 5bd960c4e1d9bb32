#include "platform/code_page.h"

#include <climits>

#include "platform/utf8.h"

std::string platform::convertCodePage(const std::string& text, UINT from, UINT to) {
  // ASCII is the same in all ANSI and OEM code pages.
  if (isAscii(text)) return text;
  if (text.size() > INT_MAX) return {};
  const int length = static_cast<int>(text.size());
  const int units = MultiByteToWideChar(from, 0, text.data(), length, nullptr, 0);
  if (units <= 0) return {};
  std::basic_string<WCHAR> wide(static_cast<std::size_t>(units), WCHAR{});
  MultiByteToWideChar(from, 0, text.data(), length, wide.data(), units);
  const int bytes = WideCharToMultiByte(to, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0) return {};
  std::string result(static_cast<std::size_t>(bytes), '\0');
  WideCharToMultiByte(to, 0, wide.data(), units, result.data(), bytes, nullptr, nullptr);
  return result;
}
