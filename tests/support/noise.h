#pragma once

#include <random>
#include <string>

namespace support {

// Returns bytes that deflate cannot shrink.
inline std::string noise(std::size_t size, unsigned seed = 1) {
  std::minstd_rand random(seed);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(random() >> 8);
  return bytes;
}

}  // namespace support
