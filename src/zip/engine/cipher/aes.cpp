#include "zip/engine/cipher/aes.h"

#include "zip/engine.h"
#include "zip/engine/codec/methods.h"
#include "zip/engine/container/extra_field.h"

namespace zip_engine {

namespace {

// The extra field: version, "AE", strength, method of the content.
constexpr std::uint16_t kId = 0x9901;
constexpr std::uint16_t kSize = 7;

std::optional<ExtraBlock> extraBlock(const CentralRecord& record) {
  const auto block = findExtraBlock(record.extra(), record.extraLength(), kId);
  return block && block->size >= kSize ? block : std::nullopt;
}

}  // namespace

void appendAesExtra(Bytes& out, const AesParameters& parameters) {
  append16(out, kId);
  append16(out, kSize);
  append16(out, 2);
  out.push_back('A');
  out.push_back('E');
  out.push_back(static_cast<unsigned char>(parameters.keySize / 8 - 1));
  append16(out, parameters.method);
}

std::optional<std::uint16_t> aesMethod(const CentralRecord& record) {
  const auto block = extraBlock(record);
  return block ? std::optional(load16(block->data + 5)) : std::nullopt;
}

std::optional<AesParameters> aesParameters(const CentralRecord& record) {
  const auto block = extraBlock(record);
  if (!block) return std::nullopt;
  const std::uint16_t version = load16(block->data);
  const unsigned strength = block->data[4];
  const std::uint16_t method = load16(block->data + 5);
  const bool isKnown =
      (version == 1 || version == 2) && strength >= 1 && strength <= 3 && isReadableMethod(method);
  if (!isKnown) return std::nullopt;
  return AesParameters{.keySize = 8 + 8 * strength, .method = method, .hasCrc = version == 1};
}

}  // namespace zip_engine
