#pragma once
// Traditional encryption of zip archives (APPNOTE 6.1). It is weak: a few known bytes of the
// content are enough to break it.

#include <cstddef>
#include <cstdint>

namespace zip_engine {

// The stream cipher. Each call continues after the bytes of the calls before.
class TraditionalCipher {
 public:
  explicit TraditionalCipher(const char* password);
  void decrypt(unsigned char* bytes, std::size_t size);
  void encrypt(unsigned char* bytes, std::size_t size);

 private:
  void update(unsigned char plain);
  unsigned char keyByte() const;

  std::uint32_t key0_ = 0x12345678;
  std::uint32_t key1_ = 0x23456789;
  std::uint32_t key2_ = 0x34567890;
};

}  // namespace zip_engine
