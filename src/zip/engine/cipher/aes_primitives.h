#pragma once
// The cryptographic algorithms of AES entries. The build chooses whose they are: nettle/ has those
// of nettle, cng/ those of Windows, and with without_aes/ hasAes() is false and nothing else is
// used.

#include <cstddef>
#include <memory>

#include "zip/engine/container/format.h"

namespace zip_engine {

// Derives keys from a password: PBKDF2 with HMAC-SHA1 (RFC 8018). Fills `keys`.
void deriveKeys(const char* password, const unsigned char* salt, std::size_t saltSize,
                unsigned iterations, Bytes& keys);

inline constexpr std::size_t kAesBlockSize = 16;

// Encrypts single blocks with AES (FIPS 197).
class AesBlocks {
 public:
  // The key has 16, 24 or 32 bytes.
  AesBlocks(const unsigned char* key, std::size_t keySize);
  ~AesBlocks();

  // Encrypts whole blocks in place. `size` is in bytes.
  void encrypt(unsigned char* blocks, std::size_t size);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// A message authentication code with SHA-1 (RFC 2104).
class HmacSha1 {
 public:
  HmacSha1(const unsigned char* key, std::size_t keySize);
  ~HmacSha1();

  void update(const unsigned char* bytes, std::size_t size);
  // Writes the first `size` bytes of the code, at most 20. Called once.
  void finish(unsigned char* code, std::size_t size);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zip_engine
