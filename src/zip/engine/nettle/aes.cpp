#include "zip/engine/aes.h"

#include <nettle/hmac.h>
#include <nettle/memops.h>
#include <nettle/nettle-meta.h>
#include <nettle/pbkdf2.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace zip_engine {
namespace {

constexpr std::size_t kBlock = 16;
constexpr unsigned kIterations = 1000;

const nettle_cipher& cipherOf(std::size_t keySize) {
  return keySize == 16 ? nettle_aes128 : keySize == 24 ? nettle_aes192 : nettle_aes256;
}

// Bytes that are exclusive-ored with the data: the encrypted numbers 1, 2, 3, ... as little-endian
// blocks. nettle's counter mode has big-endian ones.
class KeyStream {
 public:
  KeyStream(std::size_t keySize, const unsigned char* key)
      : cipher_(cipherOf(keySize)), context_(cipher_.context_size) {
    cipher_.set_encrypt_key(context_.data(), key);
  }

  void apply(unsigned char* bytes, std::size_t size) {
    while (size > 0) {
      if (used_ == stream_.size()) refill();
      const std::size_t count = std::min(size, stream_.size() - used_);
      nettle_memxor(bytes, stream_.data() + used_, count);
      used_ += count;
      bytes += count;
      size -= count;
    }
  }

 private:
  void refill() {
    stream_.fill(0);
    for (std::size_t at = 0; at < stream_.size(); at += kBlock) {
      store64(stream_.data() + at, ++counter_);
    }
    cipher_.encrypt(context_.data(), stream_.size(), stream_.data(), stream_.data());
    used_ = 0;
  }

  const nettle_cipher& cipher_;
  Bytes context_;
  std::uint64_t counter_ = 0;
  std::array<unsigned char, 256 * kBlock> stream_;
  std::size_t used_ = stream_.size();
};

}  // namespace

struct AesCipher::State {
  // `keys` has the key of the cipher, the key of the authentication code and the verifier.
  State(std::size_t keySize, const Bytes& keys) : keyStream(keySize, keys.data()) {
    hmac_sha1_set_key(&authentication, keySize, keys.data() + keySize);
    std::copy_n(keys.data() + 2 * keySize, kAesVerifierSize, verifier);
  }

  KeyStream keyStream;
  hmac_sha1_ctx authentication;
  unsigned char verifier[kAesVerifierSize];
};

bool hasAes() { return true; }

AesCipher::AesCipher(const char* password, const AesParameters& parameters,
                     const unsigned char* salt) {
  Bytes keys(2 * parameters.keySize + kAesVerifierSize);
  pbkdf2_hmac_sha1(std::strlen(password), reinterpret_cast<const std::uint8_t*>(password),
                   kIterations, parameters.saltSize(), salt, keys.size(), keys.data());
  state_ = std::make_unique<State>(parameters.keySize, keys);
}

AesCipher::~AesCipher() = default;

const unsigned char* AesCipher::verifier() const { return state_->verifier; }

void AesCipher::encrypt(unsigned char* bytes, std::size_t size) {
  state_->keyStream.apply(bytes, size);
  hmac_sha1_update(&state_->authentication, size, bytes);
}

void AesCipher::decrypt(unsigned char* bytes, std::size_t size) {
  hmac_sha1_update(&state_->authentication, size, bytes);
  state_->keyStream.apply(bytes, size);
}

void AesCipher::writeCode(unsigned char* code) {
  hmac_sha1_digest(&state_->authentication, kAesCodeSize, code);
}

bool AesCipher::isAuthentic(const unsigned char* code) {
  unsigned char expected[kAesCodeSize];
  writeCode(expected);
  return nettle_memeql_sec(expected, code, sizeof(expected)) != 0;
}

}  // namespace zip_engine
