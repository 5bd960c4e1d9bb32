#include <libdeflate.h>

#include "zip/engine.h"

std::uint32_t ZipCrc32(std::uint32_t crc, const void* data, std::uint32_t length) {
  return data == nullptr ? 0 : libdeflate_crc32(crc, data, length);
}
