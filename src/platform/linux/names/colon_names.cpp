#include "platform/colon_names.h"

bool platform::isDriveOrStream(std::string_view path) {
  const std::string_view first = path.substr(0, path.find_first_of("\\/"));
  if (first.size() != 2 || first[1] != ':') return false;
  const char letter = static_cast<char>(first[0] | 0x20);
  return letter >= 'a' && letter <= 'z';
}
