// Times.

#include <cstring>

#include "platform/conformance.h"
#include "platform/local_time.h"

namespace {

TEST_F(Conformance, Times) {
  const std::string file = folder_.file("file");
  support::setWriteTime(file, 1600000000, 123456700);
  WIN32_FILE_ATTRIBUTE_DATA data{};
  ASSERT_TRUE(GetFileAttributesExA(file.c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.nFileSizeLow, 5U);
  WIN32_FIND_DATAA found{};
  const platform::SearchHandle search(FindFirstFileA(file.c_str(), &found));
  EXPECT_EQ(memcmp(&found.ftLastWriteTime, &data.ftLastWriteTime, sizeof(FILETIME)), 0);
}

// The fields of a date in an archive have room for them.
TEST(Times, ImpossibleDates) {
  for (const auto& [month, day] : {std::pair(0, 1), {13, 1}, {15, 31}, {1, 0}, {1, 32}}) {
    const SYSTEMTIME time{2026, static_cast<WORD>(month), 0, static_cast<WORD>(day), 0, 0, 0, 0};
    EXPECT_FALSE(platform::timeOfLocal(time)) << month << ' ' << day;
  }
}

TEST(Times, AutomationDates) {
  const std::pair<SYSTEMTIME, double> cases[] = {
      {{1899, 12, 6, 30, 0, 0, 0, 0}, 0.0},
      {{1899, 12, 0, 31, 12, 0, 0, 0}, 1.5},
      {{1899, 12, 5, 29, 6, 0, 0, 0}, -1.25},
      {{2000, 2, 2, 29, 23, 59, 59, 0}, 36585.0 + 86399.0 / 86400},
      {{9999, 12, 5, 31, 0, 0, 0, 0}, 2958465.0},
  };
  double date = 0;
  for (const auto& [time, expected] : cases) {
    SYSTEMTIME copy = time;
    ASSERT_TRUE(SystemTimeToVariantTime(&copy, &date)) << expected;
    EXPECT_NEAR(date, expected, 1e-9);
    SYSTEMTIME back{};
    ASSERT_TRUE(VariantTimeToSystemTime(date, &back));
    EXPECT_EQ(memcmp(&back, &time, sizeof(back)), 0) << expected;
  }
  // A file can have such a time.
  SYSTEMTIME late{10000, 1, 0, 1, 0, 0, 0, 0};
  EXPECT_FALSE(SystemTimeToVariantTime(&late, &date));
}

}  // namespace
