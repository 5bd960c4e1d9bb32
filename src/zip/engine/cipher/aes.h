#pragma once
// AES encryption of entries, as WinZip published it (AE-1 and AE-2). The algorithms are those of
// aes_primitives.h.
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

#include "zip/engine/container/central_directory.h"

namespace zip_engine {

inline constexpr std::size_t kAesVerifierSize = 2;
inline constexpr std::size_t kAesCodeSize = 10;
inline constexpr std::size_t kLongestAesHeader = 16 + kAesVerifierSize;
inline constexpr std::size_t kAesExtraSize = 11;

// The values of the extra field of an AES entry.
struct AesParameters {
  std::size_t keySize;   // in bytes
  std::uint16_t method;  // of the data inside the encryption
  bool hasCrc = false;

  std::size_t saltSize() const { return keySize / 2; }
  std::size_t headerSize() const { return saltSize() + kAesVerifierSize; }
};

// Returns the parameters of a record whose method is kMethodAes; nothing if it has none that are
// known.
std::optional<AesParameters> aesParameters(const CentralRecord& record);

// Returns the method that such a record names for its content; nothing if it has no extra field.
std::optional<std::uint16_t> aesMethod(const CentralRecord& record);

// Appends the extra field of an entry that has the parameters but no CRC, kAesExtraSize bytes.
void appendAesExtra(Bytes& out, const AesParameters& parameters);

// Reports whether the build can read and write AES entries.
bool hasAes();

// Used only if hasAes() is true.
class AesCipher {
 public:
  AesCipher(const char* password, const AesParameters& parameters, const unsigned char* salt);
  AesCipher(const AesCipher&) = delete;
  AesCipher& operator=(const AesCipher&) = delete;
  ~AesCipher();

  // The verifier of the password, kAesVerifierSize bytes.
  const unsigned char* verifier() const;
  // Encrypt or decrypt the next bytes.
  void encrypt(unsigned char* bytes, std::size_t size);
  void decrypt(unsigned char* bytes, std::size_t size);
  // Writes the code that authenticates all encrypted bytes, kAesCodeSize bytes. Called once.
  void writeCode(unsigned char* code);
  // Reports whether that code is the given one. Called instead of writeCode().
  bool isAuthentic(const unsigned char* code);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zip_engine
