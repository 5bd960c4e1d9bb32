#include "zip/entry_path.h"

#include "platform/colon_names.h"
#include "platform/relative_path.h"

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
  return startsWithDrive(name) || platform::hasParentComponent(name);
}

bool escapesFolder(std::string_view name) {
  if (name.empty() || kSeparators.find(name[0]) != std::string_view::npos) return true;
  return platform::isDriveOrStream(name) || platform::hasParentComponent(name);
}

std::size_t directoryLength(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator != std::string_view::npos) return separator + 1;
  return startsWithDrive(path) ? 2 : 0;
}

}  // namespace zip
