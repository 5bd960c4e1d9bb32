#pragma once
// Tests 64 bytes at a time with vector instructions.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/compiler.h"

namespace FileSystem::Xml::Detail {

inline constexpr std::size_t kBlock = 64;

using platform::Bytes;
using platform::Truths;

// Returns one bit for each byte of a block, the lowest for the first, which is set if `test` holds
// for the byte. With several blocks, `test` takes the bytes at the same offset in each of them.
template <typename Test, typename... Block>
std::uint64_t testBlock(Test test, const Block*... blocks) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < kBlock; i += sizeof(Bytes)) {
    const auto load = [i](const char* block) {
      Bytes bytes;
      std::memcpy(&bytes, block + i, sizeof(bytes));
      return bytes;
    };
    bits |= platform::bitsOf(test(load(blocks)...)) << i;
  }
  return bits;
}

}  // namespace FileSystem::Xml::Detail
