#include "platform/linux/names/case_folding.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace platform::native {
namespace {

// In pairs of neighbors the capital comes first.
constexpr std::uint16_t kEvenPairs = 0xFFFF;
constexpr std::uint16_t kOddPairs = 0xFFFE;

// Capitals, in ascending order.
struct Range {
  char16_t first;
  char16_t last;
  std::uint16_t distance;  // to the lower-case letter, or the kind of pairs
};

constexpr Range kRanges[] = {
    {0x00C0, 0x00D6, 0x20},       {0x00D8, 0x00DE, 0x20},       {0x0100, 0x012F, kEvenPairs},
    {0x0132, 0x0137, kEvenPairs}, {0x0139, 0x0148, kOddPairs},  {0x014A, 0x0177, kEvenPairs},
    {0x0179, 0x017E, kOddPairs},  {0x0386, 0x0386, 0x26},       {0x0388, 0x038A, 0x25},
    {0x038C, 0x038C, 0x40},       {0x038E, 0x038F, 0x3F},       {0x0391, 0x03A1, 0x20},
    {0x03A3, 0x03AB, 0x20},       {0x0400, 0x040F, 0x50},       {0x0410, 0x042F, 0x20},
    {0x0460, 0x0481, kEvenPairs}, {0x048A, 0x04BF, kEvenPairs}, {0x04C1, 0x04CE, kOddPairs},
    {0x04D0, 0x052F, kEvenPairs}, {0x0531, 0x0556, 0x30},       {0x1E00, 0x1E95, kEvenPairs},
    {0x1EA0, 0x1EFF, kEvenPairs}, {0xFF21, 0xFF3A, 0x20},
};

}  // namespace

char32_t foldCase(char32_t character) {
  if (character < 0x80)
    return character >= U'A' && character <= U'Z' ? character + 0x20 : character;
  constexpr char32_t kYDiaeresis = 0x178;  // whose lower-case form comes before it
  if (character == kYDiaeresis) return 0xFF;
  const auto* const range = std::lower_bound(
      std::begin(kRanges), std::end(kRanges), character,
      [](const Range& candidate, char32_t wanted) { return candidate.last < wanted; });
  if (range == std::end(kRanges) || character < range->first) return character;
  if (range->distance == kEvenPairs) return character | 1;
  if (range->distance == kOddPairs) return character + (character & 1);
  return character + range->distance;
}

}  // namespace platform::native
