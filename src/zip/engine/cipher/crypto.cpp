#include "zip/engine/cipher/crypto.h"

#include <array>

namespace zip_engine {
namespace {

// The CRC-32 (ISO 3309) of single bytes.
constexpr std::array<std::uint32_t, 256> makeCrcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
    table[i] = value;
  }
  return table;
}

constexpr std::array<std::uint32_t, 256> kCrcTable = makeCrcTable();

std::uint32_t crcStep(std::uint32_t crc, std::uint32_t byte) {
  return kCrcTable[(crc ^ byte) & 0xFF] ^ (crc >> 8);
}

}  // namespace

TraditionalCipher::TraditionalCipher(const char* password) {
  for (; *password != '\0'; ++password) update(static_cast<unsigned char>(*password));
}

void TraditionalCipher::decrypt(unsigned char* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<unsigned char>(bytes[i] ^ keyByte());
    update(bytes[i]);
  }
}

void TraditionalCipher::encrypt(unsigned char* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const unsigned char plain = bytes[i];
    bytes[i] = static_cast<unsigned char>(plain ^ keyByte());
    update(plain);
  }
}

void TraditionalCipher::update(unsigned char plain) {
  key0_ = crcStep(key0_, plain);
  key1_ = (key1_ + (key0_ & 0xFF)) * 134775813U + 1;
  key2_ = crcStep(key2_, key1_ >> 24);
}

unsigned char TraditionalCipher::keyByte() const {
  // Depends on the lower half of the key only.
  const std::uint32_t key = key2_ | 2;
  return static_cast<unsigned char>((key * (key ^ 1)) >> 8);
}

}  // namespace zip_engine
