#include "xml/text_search.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "xml/byte_block.h"

namespace FileSystem::Xml::Detail {

std::size_t findText(std::string_view text, std::string_view searched, std::size_t start) {
  if (searched.size() < 2) return text.find(searched, start);
  // The first two bytes and the last one rarely match by chance.
  const auto first = static_cast<unsigned char>(searched[0]);
  const auto second = static_cast<unsigned char>(searched[1]);
  const auto last = static_cast<unsigned char>(searched.back());
  const auto mayMatch = [=](Bytes firsts, Bytes seconds, Bytes lasts) {
    return (firsts == first) & (seconds == second) & (lasts == last);
  };
  const std::size_t lastAt = searched.size() - 1;
  std::size_t at = start;
  for (; at + lastAt + kBlock <= text.size(); at += kBlock) {
    const char* const block = text.data() + at;
    std::uint64_t candidates = testBlock(mayMatch, block, block + 1, block + lastAt);
    for (; candidates != 0; candidates &= candidates - 1) {
      const std::size_t offset = static_cast<std::size_t>(std::countr_zero(candidates));
      if (std::memcmp(block + offset, searched.data(), searched.size()) == 0) return at + offset;
    }
  }
  return text.find(searched, at);
}

}  // namespace FileSystem::Xml::Detail
