#include "zip/engine/container/entry_record.h"

#include <gtest/gtest.h>

#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/extra_field.h"

using namespace zip_engine;

// The zip64 block has those values alone that need it.
TEST(EntryRecord, HasValuesPastFourGigabytes) {
  constexpr struct {
    std::uint64_t uncompressed, compressed, offset;
    int values;
  } kRows[] = {{0xFFFF'FFFE, 0xFFFF'FFFE, 0xFFFF'FFFE, 0},
               {7, 7, 0xFFFF'FFFF, 1},
               {7, 7, 5ULL << 30, 1},
               {5ULL << 30, 7, 7, 1},
               {7, 5ULL << 30, 7, 1},
               {5ULL << 30, 7, 6ULL << 30, 2},
               {0xFFFF'FFFF, 1ULL << 62, 6ULL << 30, 3}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    CentralDirectory directory;
    EntryRecord record;
    record.uncompressedSize = row.uncompressed;
    record.compressedSize = row.compressed;
    record.centralExtra = {0x34, 0x12, 1, 0, 'C'};
    appendCentralRecord(directory.blob, record, row.offset);
    const CentralRecord central = recordAt(directory, 0);
    EXPECT_EQ(central.uncompressedSize, row.uncompressed);
    EXPECT_EQ(central.compressedSize, row.compressed);
    EXPECT_EQ(central.localOffset, row.offset);
    EXPECT_EQ(central.versionNeeded(), row.values == 0 ? 10 : 45);
    EXPECT_EQ(central.extraLength(), 5 + (row.values == 0 ? 0 : 4 + 8 * row.values));
    EXPECT_EQ(central.size(), directory.blob.size());
  }
}

// The largest value of 32 bits means that the block has the value.
TEST(EntryRecord, TheReservedValueNeedsTheBlock) {
  EXPECT_FALSE(needsZip64(0xFFFF'FFFE, 0xFFFF'FFFE));
  EXPECT_TRUE(needsZip64(0xFFFF'FFFF, 0));
  EXPECT_TRUE(needsZip64(0, 0xFFFF'FFFF));
}

TEST(EntryRecord, DescriptorsHaveSizesOf64Bits) {
  EntryRecord record;
  record.uncompressedSize = 5ULL << 30;
  record.compressedSize = 7;
  record.hasZip64 = true;
  Bytes bytes;
  appendDescriptor(bytes, record);
  ASSERT_EQ(bytes.size(), 24U);
  EXPECT_EQ(load64(&bytes[8]), 7U);
  EXPECT_EQ(load64(&bytes[16]), 5ULL << 30);
}

// Otherwise the value would be a size that an archive beyond 4 GiB has space for.
TEST(EntryRecord, ValuesThatABlockLacksAreLargerThanAnyFile) {
  const unsigned char block[] = {1, 0, 15, 0, 7, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0};
  std::uint64_t first = kSaturated32;
  std::uint64_t small = 5;
  std::uint64_t second = kSaturated32;
  readZip64(block, sizeof(block), {&first, &small, &second});
  EXPECT_EQ(first, 7U);
  EXPECT_EQ(small, 5U);
  EXPECT_EQ(second, UINT64_MAX);
  second = kSaturated32;
  readZip64(block, 3, {&second});
  EXPECT_EQ(second, kSaturated32) << "without a block";
}

TEST(EntryRecord, DatesAreThoseOfDos) {
  constexpr struct {
    ZipDateWords words;  // second, minute, hour, day, month from 0, year
    std::uint32_t year, month, day, hour, minute, second;
  } kRows[] = {
      {{58, 57, 22, 30, 11, 2106}, 2106, 12, 30, 22, 57, 58},
      {{0, 0, 0, 1, 0, 2107}, 2107, 1, 1, 0, 0, 0},
      {{0, 0, 0, 1, 0, 2108}, 2107, 12, 31, 23, 59, 58},
      {{1, 2, 3, 4, 5, 1980}, 1980, 6, 4, 3, 2, 0},
      {{1, 2, 3, 4, 5, 1979}, 1980, 1, 1, 0, 0, 0},
      {{60, 60, 24, 32, 12, 2000}, 2000, 12, 31, 23, 59, 58},
      {{59, 59, 23, 0, 0, 2000}, 2000, 1, 1, 23, 59, 58},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(dosDateOf(row.words), (row.year - 1980) << 25 | row.month << 21 | row.day << 16 |
                                        row.hour << 11 | row.minute << 5 | row.second / 2)
        << row.words.year << ' ' << row.words.day;
  }
}
