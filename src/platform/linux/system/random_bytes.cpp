#include "platform/random_bytes.h"

#include <sys/random.h>

#include <cerrno>

namespace platform {

// Requests of more than 256 bytes can be interrupted by a signal.
bool fillRandom(unsigned char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t count = getrandom(bytes, size, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace platform
