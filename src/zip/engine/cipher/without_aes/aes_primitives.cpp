#include "zip/engine/cipher/aes_primitives.h"

#include "zip/engine/cipher/aes.h"

namespace zip_engine {

bool hasAes() { return false; }

void deriveKeys(const char*, const unsigned char*, std::size_t, unsigned, Bytes&) {}

struct AesBlocks::State {};
AesBlocks::AesBlocks(const unsigned char*, std::size_t) {}
AesBlocks::~AesBlocks() = default;
void AesBlocks::encrypt(unsigned char*, std::size_t) {}

struct HmacSha1::State {};
HmacSha1::HmacSha1(const unsigned char*, std::size_t) {}
HmacSha1::~HmacSha1() = default;
void HmacSha1::update(const unsigned char*, std::size_t) {}
void HmacSha1::finish(unsigned char*, std::size_t) {}

}  // namespace zip_engine
