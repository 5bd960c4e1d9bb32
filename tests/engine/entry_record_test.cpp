#include "zip/engine/container/entry_record.h"

#include <gtest/gtest.h>

#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/end_record.h"

using namespace zip_engine;

TEST(EntryRecord, HasOffsetsPastFourGigabytes) {
  for (const std::uint64_t offset : {0xFFFF'FFFEULL, 0xFFFF'FFFFULL, 5ULL << 30}) {
    CentralDirectory directory;
    EntryRecord record;
    record.compressedSize = 7;
    appendCentralRecord(directory.blob, record, offset);
    EXPECT_EQ(recordAt(directory, 0).localOffset, offset);
    EXPECT_EQ(recordAt(directory, 0).compressedSize, 7U);
    EXPECT_EQ(recordAt(directory, 0).versionNeeded(), offset < 0xFFFF'FFFF ? 10 : 45);
    EXPECT_EQ(recordAt(directory, 0).size(), directory.blob.size());
  }
}

TEST(EntryRecord, LargeValuesNeedTheZip64EndRecord) {
  constexpr std::uint64_t kLarge = 0xFFFF'FFFF;
  constexpr std::uint64_t kRows[][3] = {{kLarge, 0, 0}, {0, kLarge, 0}, {0, 0, 0xFFFF}};
  for (const auto& [position, size, count] : kRows) {
    Bytes bytes;
    appendEndRecords(bytes, position, size, count, "");
    ASSERT_EQ(bytes.size(), 98U);
    EXPECT_EQ(load64(&bytes[4]), 44U) << "size of the rest of the record";
    EXPECT_EQ(load64(&bytes[64]), position + size);
    EXPECT_EQ(load32(&bytes[60]), 0U) << "disk of the end record";
    EXPECT_EQ(load32(&bytes[72]), 1U) << "number of disks";
  }
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
