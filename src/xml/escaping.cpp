// Escaping text for XML, and undoing it.

#include <filesystem/xml.h>

#include <array>
#include <string_view>

namespace FileSystem::Xml {
namespace {

// What toXml puts in the place of a byte that it does not keep; an empty text
// drops the byte.
struct Replacement {
  bool replaces = false;
  std::string_view text;
};

constexpr std::array<Replacement, 256> makeReplacements() {
  std::array<Replacement, 256> table{};
  for (unsigned char c = 1; c < ' '; ++c) table[c].replaces = c != '\t' && c != '\n' && c != '\r';
  table['<'] = {true, "&lt;"};
  table['>'] = {true, "&gt;"};
  table['&'] = {true, "&amp;"};
  table['\''] = {true, "&apos;"};
  table['"'] = {true, "&quot;"};
  return table;
}

constexpr std::array<Replacement, 256> kReplacements = makeReplacements();

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

std::string toXml(const std::string& text) {
  std::string result;
  result.reserve(text.size() + text.size() / 16);
  std::size_t kept = 0;  // where the bytes begin that are kept and not copied yet
  for (std::size_t i = 0; i < text.size(); ++i) {
    const Replacement& replacement = kReplacements[static_cast<unsigned char>(text[i])];
    if (!replacement.replaces) continue;
    result.append(text, kept, i - kept);
    result += replacement.text;
    kept = i + 1;
  }
  result.append(text, kept);
  return result;
}

std::string fromXml(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  std::string_view rest = text;
  for (;;) {
    const std::size_t ampersand = rest.find('&');
    result += rest.substr(0, ampersand);
    if (ampersand == std::string_view::npos) return result;
    rest.remove_prefix(ampersand + 1);
    result += takeEntity(rest);
  }
}

}  // namespace FileSystem::Xml
