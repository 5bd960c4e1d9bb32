#pragma once
// Traditional encryption of zip archives (PKWARE APPNOTE, section 6.1). It keeps
// the curious out, not an attacker.

#include <cstddef>
#include <cstdint>

namespace zip_engine {

// The stream cipher, in the state behind the bytes that went through it.
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
