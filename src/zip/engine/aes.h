#pragma once
// AES encryption of entries, as WinZip published it (AE-1 and AE-2). The build chooses the
// implementation: nettle/aes.cpp, or without_aes/aes.cpp, which refuses all entries.
//
//   | salt | verifier | encrypted data ............... | authentication code |
//   | 8-16 |    2     |                                |         10          |
//
// Password and salt give the keys and the verifier, by which most wrong passwords are recognized.
// The code authenticates the encrypted data. AE-2 has it in place of the CRC-32, which is zero.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "zip/engine/central_directory.h"

namespace zip_engine {

inline constexpr std::size_t kAesVerifierSize = 2;
inline constexpr std::size_t kAesCodeSize = 10;
inline constexpr std::size_t kLongestAesHeader = 16 + kAesVerifierSize;

// The values of the extra field of an AES entry.
struct AesParameters {
  std::size_t keySize = 0;   // in bytes
  std::uint16_t method = 0;  // of the data inside the encryption
  bool hasCrc = false;

  std::size_t headerSize() const { return keySize / 2 + kAesVerifierSize; }
};

// Returns the parameters of a record whose method is kMethodAes; nothing if it has none that are
// known.
std::optional<AesParameters> aesParameters(const CentralRecord& record);

// Reports whether the build can read AES entries.
bool readsAes();

class AesCipher {
 public:
  AesCipher(const char* password, const AesParameters& parameters, const unsigned char* salt);
  AesCipher(const AesCipher&) = delete;
  AesCipher& operator=(const AesCipher&) = delete;
  ~AesCipher();

  bool hasVerifier(const unsigned char* verifier) const;
  // Decrypts the next bytes.
  void decrypt(unsigned char* bytes, std::size_t size);
  // Reports whether the code authenticates all bytes that were decrypted. Called once.
  bool isAuthentic(const unsigned char* code);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zip_engine
