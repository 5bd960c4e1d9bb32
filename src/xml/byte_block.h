#pragma once
// Tests 64 bytes at a time with vector instructions.

#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace FileSystem::Xml::Detail {

inline constexpr std::size_t kBlock = 64;

// 16 bytes. Operators apply to each byte, and a comparison sets all bits of a byte or none.
using Bytes [[gnu::vector_size(16)]] = unsigned char;
using Truths [[gnu::vector_size(16)]] = signed char;

// Returns one bit for each byte, the lowest for the first.
inline std::uint64_t bitsOf(Truths truths) {
#ifdef __SSE2__
  return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(truths)));
#else
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < sizeof(truths); ++i) bits |= std::uint64_t{truths[i] != 0} << i;
  return bits;
#endif
}

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
    bits |= bitsOf(test(load(blocks)...)) << i;
  }
  return bits;
}

}  // namespace FileSystem::Xml::Detail
