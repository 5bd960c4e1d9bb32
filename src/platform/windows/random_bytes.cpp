#include "platform/random_bytes.h"

#include "platform/win32.h"

#include <bcrypt.h>

namespace platform {

bool fillRandom(unsigned char* bytes, std::size_t size) {
  return BCryptGenRandom(nullptr, bytes, static_cast<ULONG>(size),
                         BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0;
}

}  // namespace platform
