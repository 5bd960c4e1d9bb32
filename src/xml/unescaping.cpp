// Undoing the escapes of XML.

#include <filesystem/xml.h>

#include <string_view>

#include "platform/large_memory.h"

namespace FileSystem::Xml {
namespace {

// Takes `start` off the front of `text` if it stands there.
bool take(std::string_view& text, std::string_view start) {
  if (!text.starts_with(start)) return false;
  text.remove_prefix(start.size());
  return true;
}

// The character of the entity whose `&` was taken off `rest`, and the entity off
// it too. Entities are undone kind by kind, so that an ampersand that came out
// of its own entity begins one of the later kinds, or its own again, but none of
// the earlier ones.
char takeEntity(std::string_view& rest) {
  if (take(rest, "lt;")) return '<';
  if (take(rest, "gt;")) return '>';
  while (take(rest, "amp;")) {
  }
  if (take(rest, "apos;")) return '\'';
  if (take(rest, "quot;")) return '"';
  return '&';
}

}  // namespace

std::string fromXml(const std::string& text) {
  // The result is never longer than the text.
  std::string result;
  platform::reserveForFilling(result, text.size());
  result.resize(text.size());
  char* out = result.data();
  std::string_view rest = text;
  for (;;) {
    const std::size_t ampersand = rest.find('&');
    out += rest.copy(out, ampersand);
    if (ampersand == std::string_view::npos) break;
    rest.remove_prefix(ampersand + 1);
    *out++ = takeEntity(rest);
  }
  result.resize(static_cast<std::size_t>(out - result.data()));
  return result;
}

}  // namespace FileSystem::Xml
