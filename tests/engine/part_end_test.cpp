// The parts in which data are deflated that take long. Their sizes are part of the bytes of an archive,
// which are the same wherever it is written.

#include <gtest/gtest.h>

#include "support/noise.h"
#include "zip/engine/codec/part_end.h"

namespace {

// Random letters of so many kinds.
std::string lettersOf(int kinds) {
  std::string letters = support::noise(5 << 20);
  for (char& letter : letters) {
    letter = static_cast<char>('a' + static_cast<unsigned char>(letter) % kinds);
  }
  return letters;
}

TEST(PartEnd, IsEarlierInDataThatTakeLong) {
  // In KiB; 0 for the largest part.
  struct Parts {
    int level;
    std::size_t first;
    std::size_t second;
  };
  const std::pair<int, std::vector<Parts>> kRows[] = {
      {2,
       {{-1, 512, 512},
        {2, 0, 0},
        {3, 3072, 0},
        {4, 2560, 0},
        {5, 2560, 0},
        {6, 1024, 1024},
        {8, 128, 128},
        {9, 64, 64}}},
      {4, {{3, 512, 512}, {7, 128, 128}, {9, 64, 64}}},
      {8, {{3, 1024, 512}, {6, 512, 512}, {8, 512, 448}, {9, 448, 384}}},
      {64, {{9, 0, 0}}},
  };
  for (const auto& [kinds, levels] : kRows) {
    const std::string letters = lettersOf(kinds);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(letters.data());
    for (const auto& [level, first, second] : levels) {
      zip_engine::PartEnd end(level);
      const std::size_t size = end.find(bytes, letters.size());
      EXPECT_EQ(size, first << 10) << kinds << " kinds, level " << level;
      end.begin();
      EXPECT_EQ(end.find(bytes + size, letters.size() - size), second << 10)
          << kinds << " kinds, level " << level;
    }
  }
}

}  // namespace
