#pragma once
// Random bytes for keys and salts.

#include <cstddef>

namespace platform {

// Fills the buffer from the system's generator. Returns false, with the buffer unspecified, if that
// fails.
bool fillRandom(unsigned char* bytes, std::size_t size);

}  // namespace platform
