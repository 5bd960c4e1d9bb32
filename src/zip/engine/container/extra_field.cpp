#include "zip/engine/container/extra_field.h"

namespace zip_engine {
namespace {

constexpr std::size_t kBlockHeader = 4;

// Returns the size of the block at the start, or 0 if there is no whole one.
std::size_t blockSize(const unsigned char* extra, std::size_t size) {
  if (size < kBlockHeader) return 0;
  const std::size_t whole = kBlockHeader + load16(extra + 2);
  return whole <= size ? whole : 0;
}

}  // namespace

std::optional<ExtraBlock> findExtraBlock(const unsigned char* extra, std::size_t size,
                                         std::uint16_t id) {
  while (const std::size_t whole = blockSize(extra, size)) {
    if (load16(extra) == id) return ExtraBlock{extra + kBlockHeader, whole - kBlockHeader};
    extra += whole;
    size -= whole;
  }
  return std::nullopt;
}

void readZip64(const unsigned char* extra, std::size_t size,
               std::initializer_list<std::uint64_t*> values) {
  const std::optional<ExtraBlock> block = findExtraBlock(extra, size, kZip64ExtraId);
  if (!block) return;
  std::size_t at = 0;
  for (std::uint64_t* const value : values) {
    if (*value != kSaturated32) continue;
    const bool isThere = block->size - at >= 8;
    *value = isThere ? load64(block->data + at) : kNoSize;
    if (isThere) at += 8;
  }
}

Bytes withoutZip64(const unsigned char* extra, std::size_t size) {
  Bytes rest;
  while (const std::size_t whole = blockSize(extra, size)) {
    if (load16(extra) != kZip64ExtraId) rest.insert(rest.end(), extra, extra + whole);
    extra += whole;
    size -= whole;
  }
  rest.insert(rest.end(), extra, extra + size);
  return rest;
}

}  // namespace zip_engine
