#include "platform/colon_names.h"

bool platform::isDriveOrStream(std::string_view path) {
  // `C:` alone is a file or link of that name.
  if (path.size() < 3 || path[1] != ':' || (path[2] != '\\' && path[2] != '/')) return false;
  const char letter = static_cast<char>(path[0] | 0x20);
  return letter >= 'a' && letter <= 'z';
}
