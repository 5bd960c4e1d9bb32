#include "platform/symbolic_links.h"

bool platform::isFoundLink(HANDLE) { return false; }

bool platform::readLink(const char*, std::string&) {
  SetLastError(ERROR_NOT_SUPPORTED);
  return false;
}
