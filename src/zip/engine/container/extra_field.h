#pragma once
// Extra fields: a row of blocks, each with an id, a length and that many bytes (APPNOTE 4.5).

#include <cstdint>
#include <initializer_list>
#include <optional>

#include "zip/engine/container/format.h"

namespace zip_engine {

struct ExtraBlock {
  const unsigned char* data = nullptr;
  std::size_t size = 0;
};

// Returns the data of the first whole block with the id.
std::optional<ExtraBlock> findExtraBlock(const unsigned char* extra, std::size_t size,
                                         std::uint16_t id);

// Replaces those values that are 0xFFFFFFFF by the values of the zip64 block, which has just these,
// in the order of the list. A value that the block lacks becomes kNoSize. Without a block they
// remain.
void readZip64(const unsigned char* extra, std::size_t size,
               std::initializer_list<std::uint64_t*> values);

// More than any file has.
inline constexpr std::uint64_t kNoSize = UINT64_MAX;

// Returns the extra field without its zip64 block. Bytes that are no block are kept.
Bytes withoutZip64(const unsigned char* extra, std::size_t size);

}  // namespace zip_engine
