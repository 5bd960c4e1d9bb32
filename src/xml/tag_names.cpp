#include <filesystem/xml.h>

#include <array>
#include <string_view>

#include "path/lower_case.h"

namespace FileSystem::Xml {
namespace {

// The text that replaces each byte of Windows-1252 in a name; empty for a byte that is kept.
constexpr std::array<std::string_view, 256> makeSubstitutes() {
  std::array<std::string_view, 256> table{};
  struct Group {
    std::string_view bytes;
    std::string_view substitute;
  };
  constexpr Group kGroups[] = {
      {"\xE0\xE2\xE4", "a"}, {"\xE7", "c"},         {"\xE8\xE9\xEA\xEB", "e"},
      {"\xF2\xF4\xF6", "o"}, {"\xF9\xFB\xFC", "u"}, {" !\"$%&'*+/<>?\\", "_"},
      {"@", "_at_"}};
  for (const Group& group : kGroups) {
    for (const char c : group.bytes) table[static_cast<unsigned char>(c)] = group.substitute;
  }
  return table;
}

constexpr std::array<std::string_view, 256> kSubstitutes = makeSubstitutes();

}  // namespace

std::string toXmlTag(const std::string& name) {
  std::string tag;
  tag.reserve(name.size());
  for (const char c : name) {
    const std::string_view substitute = kSubstitutes[static_cast<unsigned char>(c)];
    if (substitute.empty()) {
      tag += c;
    } else {
      tag += substitute;
    }
  }
  return FileSystem::Detail::lowerCase(tag);
}

}  // namespace FileSystem::Xml
