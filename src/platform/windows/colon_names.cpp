#include "platform/colon_names.h"

bool platform::isDriveOrStream(std::string_view path) {
  return path.find(':') != std::string_view::npos;
}
