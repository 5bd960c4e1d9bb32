#include <algorithm>
#include <array>

#include "zip/engine/cipher/aes.h"
#include "zip/engine/cipher/aes_primitives.h"

namespace zip_engine {
namespace {

constexpr unsigned kIterations = 1000;

}  // namespace

// Bytes that are exclusive-ored with the data: the encrypted numbers 1, 2, 3, ... as little-endian
// blocks.
class KeyStream {
 public:
  KeyStream(const unsigned char* key, std::size_t keySize) : cipher_(key, keySize) {}

  void apply(unsigned char* bytes, std::size_t size) {
    while (size > 0) {
      if (used_ == stream_.size()) refill();
      const std::size_t count = std::min(size, stream_.size() - used_);
      for (std::size_t i = 0; i < count; ++i) bytes[i] ^= stream_[used_ + i];
      used_ += count;
      bytes += count;
      size -= count;
    }
  }

 private:
  void refill() {
    stream_.fill(0);
    for (std::size_t at = 0; at < stream_.size(); at += kAesBlockSize) {
      store64(stream_.data() + at, ++counter_);
    }
    cipher_.encrypt(stream_.data(), stream_.size());
    used_ = 0;
  }

  AesBlocks cipher_;
  std::uint64_t counter_ = 0;
  std::array<unsigned char, 256 * kAesBlockSize> stream_;
  std::size_t used_ = stream_.size();
};

struct AesCipher::State {
  // `keys` has the key of the cipher, the key of the authentication code and the verifier.
  State(std::size_t keySize, const Bytes& keys)
      : keyStream(keys.data(), keySize), authentication(keys.data() + keySize, keySize) {
    std::copy_n(keys.data() + 2 * keySize, kAesVerifierSize, verifier);
  }

  KeyStream keyStream;
  HmacSha1 authentication;
  unsigned char verifier[kAesVerifierSize];
};

AesCipher::AesCipher(const char* password, const AesParameters& parameters,
                     const unsigned char* salt) {
  Bytes keys(2 * parameters.keySize + kAesVerifierSize);
  deriveKeys(password, salt, parameters.saltSize(), kIterations, keys);
  state_ = std::make_unique<State>(parameters.keySize, keys);
}

AesCipher::~AesCipher() = default;

const unsigned char* AesCipher::verifier() const { return state_->verifier; }

void AesCipher::encrypt(unsigned char* bytes, std::size_t size) {
  state_->keyStream.apply(bytes, size);
  state_->authentication.update(bytes, size);
}

void AesCipher::decrypt(unsigned char* bytes, std::size_t size) {
  state_->authentication.update(bytes, size);
  state_->keyStream.apply(bytes, size);
}

void AesCipher::writeCode(unsigned char* code) {
  state_->authentication.finish(code, kAesCodeSize);
}

bool AesCipher::isAuthentic(const unsigned char* code) {
  unsigned char expected[kAesCodeSize];
  writeCode(expected);
  return std::equal(expected, expected + kAesCodeSize, code);
}

}  // namespace zip_engine
