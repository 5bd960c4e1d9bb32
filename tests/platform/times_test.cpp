// Times.

#include <cmath>
#include <cstring>

#include "platform/conformance.h"

namespace {

bool equal(const SYSTEMTIME& first, const SYSTEMTIME& second) {
  return memcmp(&first, &second, sizeof(first)) == 0;
}

TEST_F(Conformance, Times) {
  const std::string file = folder_.file("file");
  constexpr long kNanoseconds = 123456700;
  support::setWriteTime(file, 1600000000, kNanoseconds);
  WIN32_FILE_ATTRIBUTE_DATA data{};
  ASSERT_TRUE(GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.nFileSizeLow, 5U);
  SYSTEMTIME time{};
  ASSERT_TRUE(FileTimeToSystemTime(&data.ftLastWriteTime, &time));
  const auto milliseconds =
      static_cast<WORD>((kNanoseconds - kNanoseconds % support::fileSystem().timeStep) / 1'000'000);
  EXPECT_TRUE(equal(time, {2020, 9, 0, 13, 12, 26, 40, milliseconds}));
  WIN32_FIND_DATAA found{};
  const platform::SearchHandle search(FindFirstFileA(file.c_str(), &found));
  EXPECT_EQ(memcmp(&found.ftLastWriteTime, &data.ftLastWriteTime, sizeof(FILETIME)), 0);
  const FILETIME negative{0, 0x80000000};
  EXPECT_FALSE(FileTimeToSystemTime(&negative, &time));
}

TEST(Times, AutomationDates) {
  struct {
    SYSTEMTIME time;
    double date;
    bool isRepaired;  // names another day or year
  } const cases[] = {
      {{1899, 12, 6, 30, 0, 0, 0, 0}, 0.0, false},
      {{1899, 12, 0, 31, 12, 0, 0, 0}, 1.5, false},
      {{1899, 12, 5, 29, 6, 0, 0, 0}, -1.25, false},
      {{2000, 2, 2, 29, 23, 59, 59, 0}, 36585.0 + 86399.0 / 86400, false},
      {{100, 1, 5, 1, 0, 0, 0, 0}, -657434.0, false},
      {{9999, 12, 5, 31, 0, 0, 0, 0}, 2958465.0, false},
      {{2021, 2, 0, 29, 0, 0, 0, 0}, 44256.0, true},  // 2021-03-01
      {{2021, 3, 0, 0, 0, 0, 0, 0}, 44255.0, true},   // 2021-02-28
      {{29, 1, 0, 1, 0, 0, 0, 0}, 47119.0, true},     // 2029-01-01
      {{99, 1, 0, 1, 0, 0, 0, 0}, 36161.0, true},     // 1999-01-01
  };
  double date = 0;
  for (const auto& c : cases) {
    SYSTEMTIME time = c.time;
    ASSERT_TRUE(SystemTimeToVariantTime(&time, &date)) << c.date;
    EXPECT_NEAR(date, c.date, 1e-9);
    SYSTEMTIME back{};
    ASSERT_TRUE(VariantTimeToSystemTime(date, &back));
    EXPECT_EQ(equal(back, c.time), !c.isRepaired) << c.date;
  }
  for (SYSTEMTIME bad :
       {SYSTEMTIME{2021, 13, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{2021, 1, 0, 32, 0, 0, 0, 0},
        SYSTEMTIME{10000, 1, 0, 1, 0, 0, 0, 0}}) {
    EXPECT_FALSE(SystemTimeToVariantTime(&bad, &date)) << bad.wYear;
  }
  SYSTEMTIME time{};
  for (const double bad : {3e6, -7e5, static_cast<double>(INFINITY)}) {
    EXPECT_FALSE(VariantTimeToSystemTime(bad, &time)) << bad;
  }
}

}  // namespace
