// Wildcards, letter case, file times, and code pages that are UTF-8.

#include <gtest/gtest.h>
#include <locale.h>
#include <wctype.h>

#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <string>

#include "platform/linux/metadata/file_time.h"
#include "platform/linux/names/case_folding.h"
#include "platform/linux/names/wildcard.h"
#include "platform/win32.h"

namespace {

TEST(Wildcard, Matches) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"*.*", "noext", true},     {"*.", "noext", true},      {"*.", "a.b", false},
      {"a?c", "abc", true},       {"a?c", "ac", false},       {"?.txt", ".txt", true},
      {"*.txt", "a.b.TXT", true}, {"a*b*c", "aXbYbZc", true}, {"a*b*c", "aXbYbZ", false},
      {"a.?", "a", true},         {"ЯБ?.*", "ябл", true},     {"?", "\xFF", true},
      {"*\xFF", "a\xFE", false},  {"*.txt ", "a.txt", true},  {"*.*.", "a.b", true},
      {"?.", "ab", false},        {"a*.", "ab", true},        {"a*.", "a.b", false},
      {"*.?", "a.bc", false},     {"**.?", "a.bc", true},     {"*a*.?", "a.ba", true},
      {"ΆΝΩ*", "άνω", true},      {"Ặ?", "ặb", true},         {"*.", ".a", true},
      {"*.", "..a", true},        {"*.", ".a.b", false},      {"*.?", ".a.bc", false},
      {"a.?", "a.b", true},       {"a.?", "ab", false},
  };
  for (const auto& [pattern, name, matches] : cases) {
    EXPECT_EQ(platform::native::Wildcard(pattern).matches(name), matches) << pattern << ' ' << name;
  }
  // A pattern for which backtracking takes exponential time.
  std::string pattern;
  for (int i = 0; i < 50; ++i) pattern += "a*";
  EXPECT_FALSE(platform::native::Wildcard(pattern + "b").matches(std::string(255, 'a')));
}

TEST(Text, ComparisonIgnoresCase) {
  const std::tuple<const char*, const char*, int> cases[] = {
      {"", "", 0},       {"ABC", "abc", 0},   {"Straße", "sTRAßE", 0}, {".ÄÖØÞ", ".äöøþ", 0},
      {"ЯБЛ", "ябл", 0}, {"a", "B", -1},      {"b", "A", 1},           {"a", "ab", -1},
      {"ab", "A", 1},    {"\xFF", "\xFE", 1}, {"ä", "\xC3", 1 - 2},
  };
  for (const auto& [first, second, expected] : cases) {
    const int order = lstrcmpiA(first, second);
    EXPECT_EQ((order > 0) - (order < 0), expected) << first << ' ' << second;
  }
}

// Three capitals stay as they are: their small letters are several, in another block, or were added
// later.
TEST(Text, CapitalsAreFoldedAsInTheCLibrary) {
  using platform::native::foldCase;
  const std::set<char32_t> kept{0x130, 0x4C0, 0x1E9E};
  const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  ASSERT_NE(locale, nullptr);
  const std::pair<char32_t, char32_t> blocks[] = {
      {0, 0x17F}, {0x386, 0x3AB}, {0x400, 0x556}, {0x1E00, 0x1EFF}, {0xFF00, 0xFF5A}};
  for (const auto& [first, last] : blocks) {
    for (char32_t c = first; c <= last; ++c) {
      const auto small = static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), locale));
      EXPECT_EQ(foldCase(c), kept.count(c) != 0 ? c : small) << std::hex << std::uint32_t{c};
    }
  }
  freelocale(locale);
}

TEST(TimesOnLinux, HaveLimits) {
  using platform::native::fileTimeOf;
  using platform::native::ticksOf;
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(ticksOf(fileTimeOf(0, 100)), 116444736000000001);
  EXPECT_EQ(ticksOf(fileTimeOf(-11644473601, 0)), 0);
  EXPECT_EQ(ticksOf(fileTimeOf(std::int64_t{1} << 40, 0)), kLast);
  EXPECT_EQ(ticksOf(fileTimeOf(kLast, 0)), kLast);
}

TEST(CodePages, EveryTextComesBack) {
  // Bytes that start, continue and break sequences.
  constexpr char kBytes[] = "a\x80\x9F\xA0\xBF\xC1\xC3\xE0\xED\xEF\xF0\xF4\xF5\xFF";
  std::minstd_rand random(1);
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % 12 + 1, '\0');
    for (char& c : text)
      c = random() % 2 != 0 ? kBytes[random() % 14] : static_cast<char>(random());
    char16_t wide[64];
    char back[64];
    const int units =
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide, 64);
    const int size = WideCharToMultiByte(CP_OEMCP, 0, wide, units, back, 64, nullptr, nullptr);
    ASSERT_EQ(std::string(back, static_cast<std::size_t>(size)), text);
  }
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, nullptr, -1, nullptr, 0), 0);
  char16_t pair[3];
  EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "😀", -1, pair, 3), 3);
  EXPECT_EQ(pair[0], 0xD83D);
  EXPECT_EQ(pair[1], 0xDE00);
}

}  // namespace
