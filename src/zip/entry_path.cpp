#include "zip/entry_path.h"

#include <algorithm>

namespace zip {
namespace {

constexpr std::string_view kSeparators = "\\/";

bool startsWithDrive(std::string_view path) {
  if (path.size() < 2 || path[1] != ':') return false;
  const char letter = static_cast<char>(path[0] | 0x20);
  return letter >= 'a' && letter <= 'z';
}

}  // namespace

bool escapesTarget(std::string_view name) {
  if (name.empty() || kSeparators.find(name[0]) != std::string_view::npos) return true;
  if (startsWithDrive(name)) return true;
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find_first_of(kSeparators, start), name.size());
    if (name.substr(start, end - start) == "..") return true;
    start = end + 1;
  }
  return false;
}

std::size_t directoryLength(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator != std::string_view::npos) return separator + 1;
  return startsWithDrive(path) ? 2 : 0;
}

}  // namespace zip
