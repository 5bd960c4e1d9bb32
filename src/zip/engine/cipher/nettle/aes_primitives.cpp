#include "zip/engine/cipher/aes_primitives.h"

#include <nettle/hmac.h>
#include <nettle/nettle-meta.h>
#include <nettle/pbkdf2.h>

#include <cstring>

#include "zip/engine/cipher/aes.h"

namespace zip_engine {

bool hasAes() { return true; }

void deriveKeys(const char* password, const unsigned char* salt, std::size_t saltSize,
                unsigned iterations, Bytes& keys) {
  pbkdf2_hmac_sha1(std::strlen(password), reinterpret_cast<const std::uint8_t*>(password),
                   iterations, saltSize, salt, keys.size(), keys.data());
}

struct AesBlocks::State {
  const nettle_cipher& cipher;
  Bytes context;
};

AesBlocks::AesBlocks(const unsigned char* key, std::size_t keySize) {
  const nettle_cipher& cipher = keySize == 16   ? nettle_aes128
                                : keySize == 24 ? nettle_aes192
                                                : nettle_aes256;
  state_ = std::make_unique<State>(State{cipher, Bytes(cipher.context_size)});
  cipher.set_encrypt_key(state_->context.data(), key);
}

AesBlocks::~AesBlocks() = default;

void AesBlocks::encrypt(unsigned char* blocks, std::size_t size) {
  state_->cipher.encrypt(state_->context.data(), size, blocks, blocks);
}

struct HmacSha1::State {
  hmac_sha1_ctx context;
};

HmacSha1::HmacSha1(const unsigned char* key, std::size_t keySize)
    : state_(std::make_unique<State>()) {
  hmac_sha1_set_key(&state_->context, keySize, key);
}

HmacSha1::~HmacSha1() = default;

void HmacSha1::update(const unsigned char* bytes, std::size_t size) {
  hmac_sha1_update(&state_->context, size, bytes);
}

void HmacSha1::finish(unsigned char* code, std::size_t size) {
  hmac_sha1_digest(&state_->context, size, code);
}

}  // namespace zip_engine
