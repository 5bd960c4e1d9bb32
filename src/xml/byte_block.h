#pragma once
// Testing 64 bytes at once.

#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace FileSystem::Xml::Detail {

inline constexpr std::size_t kBlock = 64;

// Operators work on each of these bytes; a comparison gives all bits of a byte or
// none.
using Bytes [[gnu::vector_size(16)]] = unsigned char;
using Truths [[gnu::vector_size(16)]] = signed char;

// A bit for each byte, the lowest for the first.
inline std::uint64_t bitsOf(Truths truths) {
#ifdef __SSE2__
  return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(truths)));
#else
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < sizeof(truths); ++i) bits |= std::uint64_t{truths[i] != 0} << i;
  return bits;
#endif
}

// A bit for each byte of a block, the lowest for the first, that is set where
// `test` holds. A test of more blocks than one takes the bytes that stand at the
// same place in each.
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
