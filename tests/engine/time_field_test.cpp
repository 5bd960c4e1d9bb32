#include "zip/engine/container/time_field.h"

#include <gtest/gtest.h>

using namespace zip_engine;

namespace {

constexpr std::uint64_t kSecond = 10000000;
constexpr std::uint64_t k1970 = 11644473600 * kSecond;
constexpr std::uint64_t kHalf = std::uint64_t{1} << 31;

TEST(TimeField, HasSecondsOrAllParts) {
  constexpr struct {
    std::uint64_t written;
    std::uint64_t read;
    std::size_t size;  // of the field
  } kRows[] = {{0, 0, 0},
               {k1970 + 5 * kSecond + 7, k1970 + 5 * kSecond, 9},
               {k1970 - 3 * kSecond, k1970 - 3 * kSecond, 9},
               {k1970 + (kHalf - 1) * kSecond, k1970 + (kHalf - 1) * kSecond, 9},
               {k1970 + kHalf * kSecond + 1, k1970 + kHalf * kSecond + 1, 36},
               {k1970 - kHalf * kSecond, k1970 - kHalf * kSecond, 9},
               {k1970 - (kHalf + 1) * kSecond, k1970 - (kHalf + 1) * kSecond, 36}};
  for (const auto& [written, read, size] : kRows) {
    Bytes extra;
    appendLastWrite(extra, written);
    EXPECT_EQ(extra.size(), size) << written;
    EXPECT_EQ(lastWriteIn(extra.data(), extra.size()), read) << written;
    // Each byte is needed.
    for (std::size_t cut = 1; cut < extra.size(); ++cut) {
      EXPECT_EQ(lastWriteIn(extra.data(), extra.size() - cut), 0U) << written << ' ' << cut;
    }
  }
}

}  // namespace
