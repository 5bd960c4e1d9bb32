#include "entry_names.h"

#include <filesystem/path.h>

#include <algorithm>
#include <string_view>

#include "text.h"

namespace {

// Equal for names that differ in letter case only, and different for most others. A letter of ASCII
// that has another form outside ASCII, such as the Kelvin sign, is one of all those.
std::string keyOf(const std::string& name) {
  constexpr std::string_view kWithOtherForms = "iks";
  constexpr char kOther = '\x80';
  std::string key;
  for (std::size_t position = 0; position < name.size();) {
    const auto c = nextCodePoint(name, position);
    const bool isUpper = c && *c >= U'A' && *c <= U'Z';
    const char letter = c && *c < 0x80 ? static_cast<char>(isUpper ? *c + 0x20 : *c) : kOther;
    key += kWithOtherForms.find(letter) != std::string_view::npos ? kOther : letter;
  }
  return key;
}

}  // namespace

std::string withBackslashes(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

CaseIndex::CaseIndex(const std::vector<std::string>& names) : names_(names) {
  for (std::size_t i = 0; i < names.size(); ++i) byKey_.emplace(keyOf(names[i]), i);
}

std::vector<std::size_t> CaseIndex::twinsOf(const std::string& name) const {
  std::vector<std::size_t> twins;
  const auto [first, last] = byKey_.equal_range(keyOf(name));
  for (auto it = first; it != last; ++it) {
    const std::string& other = names_[it->second];
    if (other != name && FileSystem::pathEqual(other, name)) twins.push_back(it->second);
  }
  return twins;
}
