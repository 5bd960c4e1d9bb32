#include "zip/entry_path.h"

#include <algorithm>

namespace zip {
namespace {

constexpr std::string_view kSeparators = "\\/";

bool startsWithDrive(std::string_view path) {
  if (path.find(':') != 1) return false;
  const char letter = static_cast<char>(path[0] | 0x20);
  return letter >= 'a' && letter <= 'z';
}

}  // namespace

bool escapesTarget(std::string_view name) {
  if (name.empty() || kSeparators.find(name[0]) != std::string_view::npos) return true;
  if (startsWithDrive(name)) return true;
  while (!name.empty()) {
    const std::string_view component = name.substr(0, name.find_first_of(kSeparators));
    if (component == "..") return true;
    name.remove_prefix(std::min(component.size() + 1, name.size()));
  }
  return false;
}

std::size_t directoryLength(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator != std::string_view::npos) return separator + 1;
  return startsWithDrive(path) ? 2 : 0;
}

}  // namespace zip
