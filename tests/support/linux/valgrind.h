#pragma once

#include <cstdlib>
#include <cstring>

namespace support {

// Whether valgrind runs the process, whose resident memory then says nothing.
inline bool underValgrind() {
  const char* const preloaded = std::getenv("LD_PRELOAD");
  return preloaded != nullptr && std::strstr(preloaded, "vgpreload") != nullptr;
}

}  // namespace support
