#pragma once
// The tables of the codes of deflate streams (RFC 1951, section 3.2.2).

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace zip_engine {

inline constexpr unsigned kLongestCode = 15;
inline constexpr std::size_t kLengthSymbols = 288;  // literals and the end of the block included
inline constexpr std::size_t kDistanceSymbols = 32;
inline constexpr unsigned kEndOfBlock = 256;

// Streams have the first bit of a code lowest.
inline unsigned reversedCode(unsigned code, unsigned length) {
  unsigned result = 0;
  for (unsigned i = 0; i < length; ++i) result |= (code >> i & 1) << (length - 1 - i);
  return result;
}

// Fills a table that is indexed by the next bits of a stream with `entryOf(symbol, length)` for each
// symbol, whose code has `lengths[symbol]` bits; 0 for a symbol without a code. Returns false if no
// code has these lengths.
template <typename Entry, typename EntryOf>
bool fillCodeTable(const unsigned char* lengths, std::size_t count, std::vector<Entry>& table,
                   EntryOf entryOf) {
  std::array<unsigned, kLongestCode + 1> counts{};
  for (std::size_t i = 0; i < count; ++i) ++counts[lengths[i]];
  const unsigned longest = *std::max_element(lengths, lengths + count);
  std::array<unsigned, kLongestCode + 1> next{};
  for (unsigned length = 1, code = 0; length <= longest; ++length, code <<= 1) {
    next[length] = code;
    code += counts[length];
    if (code > 1U << length) return false;
  }
  table.assign(std::size_t{1} << longest, Entry{});
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned length = lengths[i];
    if (length == 0) continue;
    const Entry entry = entryOf(i, length);
    const unsigned code = reversedCode(next[length]++, length);
    for (std::size_t at = code; at < table.size(); at += std::size_t{1} << length) {
      table[at] = entry;
    }
  }
  return true;
}

}  // namespace zip_engine
