#include "zip/engine/aes.h"

namespace zip_engine {

struct AesCipher::State {};

bool readsAes() { return false; }

AesCipher::AesCipher(const char*, const AesParameters&, const unsigned char*) {}
AesCipher::~AesCipher() = default;

bool AesCipher::hasVerifier(const unsigned char*) const { return false; }
void AesCipher::decrypt(unsigned char*, std::size_t) {}
bool AesCipher::isAuthentic(const unsigned char*) { return false; }

}  // namespace zip_engine
