#include "zip/engine.h"
#include "zip/engine/codec/codec.h"

std::uint32_t ZipCrc32(std::uint32_t crc, const void* data, std::uint32_t length) {
  return data == nullptr ? 0 : zip_engine::crc32(crc, data, length);
}
