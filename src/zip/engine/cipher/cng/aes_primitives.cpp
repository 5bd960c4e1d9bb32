// Cryptography API: Next Generation, a part of Windows.

#include "zip/engine/cipher/aes_primitives.h"

#include <cstring>
#include <new>

#include "platform/win32.h"
#include "zip/engine/cipher/aes.h"

#include <bcrypt.h>

namespace zip_engine {
namespace {

constexpr std::size_t kSha1Size = 20;

// With valid arguments a call fails only for want of memory.
void require(NTSTATUS status) {
  if (status < 0) throw std::bad_alloc();
}

struct AlgorithmCloser {
  using pointer = BCRYPT_ALG_HANDLE;
  void operator()(BCRYPT_ALG_HANDLE handle) const { BCryptCloseAlgorithmProvider(handle, 0); }
};
using Algorithm = std::unique_ptr<void, AlgorithmCloser>;

struct KeyDestroyer {
  using pointer = BCRYPT_KEY_HANDLE;
  void operator()(BCRYPT_KEY_HANDLE handle) const { BCryptDestroyKey(handle); }
};
using Key = std::unique_ptr<void, KeyDestroyer>;

struct HashDestroyer {
  using pointer = BCRYPT_HASH_HANDLE;
  void operator()(BCRYPT_HASH_HANDLE handle) const { BCryptDestroyHash(handle); }
};
using Hash = std::unique_ptr<void, HashDestroyer>;

Algorithm openAlgorithm(const wchar_t* name, ULONG flags) {
  BCRYPT_ALG_HANDLE handle = nullptr;
  require(BCryptOpenAlgorithmProvider(&handle, name, nullptr, flags));
  return Algorithm(handle);
}

Algorithm openHmacSha1() {
  return openAlgorithm(BCRYPT_SHA1_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG);
}

// The functions take input through pointers to non-constant bytes and leave it unchanged.
unsigned char* input(const unsigned char* bytes) { return const_cast<unsigned char*>(bytes); }

}  // namespace

bool hasAes() { return true; }

void deriveKeys(const char* password, const unsigned char* salt, std::size_t saltSize,
                unsigned iterations, Bytes& keys) {
  const Algorithm algorithm = openHmacSha1();
  require(BCryptDeriveKeyPBKDF2(
      algorithm.get(), input(reinterpret_cast<const unsigned char*>(password)),
      static_cast<ULONG>(std::strlen(password)), input(salt), static_cast<ULONG>(saltSize),
      iterations, keys.data(), static_cast<ULONG>(keys.size()), 0));
}

struct AesBlocks::State {
  Algorithm algorithm = openAlgorithm(BCRYPT_AES_ALGORITHM, 0);
  Key key;
};

AesBlocks::AesBlocks(const unsigned char* key, std::size_t keySize)
    : state_(std::make_unique<State>()) {
  wchar_t mode[] = BCRYPT_CHAIN_MODE_ECB;
  require(BCryptSetProperty(state_->algorithm.get(), BCRYPT_CHAINING_MODE,
                            reinterpret_cast<unsigned char*>(mode), sizeof(mode), 0));
  BCRYPT_KEY_HANDLE handle = nullptr;
  require(BCryptGenerateSymmetricKey(state_->algorithm.get(), &handle, nullptr, 0, input(key),
                                     static_cast<ULONG>(keySize), 0));
  state_->key.reset(handle);
}

AesBlocks::~AesBlocks() = default;

void AesBlocks::encrypt(unsigned char* blocks, std::size_t size) {
  ULONG written = 0;
  require(BCryptEncrypt(state_->key.get(), blocks, static_cast<ULONG>(size), nullptr, nullptr, 0,
                        blocks, static_cast<ULONG>(size), &written, 0));
}

struct HmacSha1::State {
  Algorithm algorithm = openHmacSha1();
  Hash hash;
};

HmacSha1::HmacSha1(const unsigned char* key, std::size_t keySize)
    : state_(std::make_unique<State>()) {
  BCRYPT_HASH_HANDLE handle = nullptr;
  require(BCryptCreateHash(state_->algorithm.get(), &handle, nullptr, 0, input(key),
                           static_cast<ULONG>(keySize), 0));
  state_->hash.reset(handle);
}

HmacSha1::~HmacSha1() = default;

void HmacSha1::update(const unsigned char* bytes, std::size_t size) {
  require(BCryptHashData(state_->hash.get(), input(bytes), static_cast<ULONG>(size), 0));
}

void HmacSha1::finish(unsigned char* code, std::size_t size) {
  unsigned char whole[kSha1Size];
  require(BCryptFinishHash(state_->hash.get(), whole, sizeof(whole), 0));
  std::memcpy(code, whole, size);
}

}  // namespace zip_engine
