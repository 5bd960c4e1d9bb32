#include "path/lower_case.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <locale>

namespace FileSystem::Detail {
namespace {

// The lower-case value of each byte, or 0 for the bytes that the locale converts. The capitals are
// À Â Ç È É Ê Ë Î Ï Ô Ö Ù Û in Windows-1252. Their lower-case letters, 0x20 above them, are in the
// table too: no locale changes them.
constexpr std::array<unsigned char, 256> makeAccentTable() {
  constexpr unsigned char kCapitals[] = {0xC0, 0xC2, 0xC7, 0xC8, 0xC9, 0xCA, 0xCB,
                                         0xCE, 0xCF, 0xD4, 0xD6, 0xD9, 0xDB};
  std::array<unsigned char, 256> table{};
  for (const unsigned char capital : kCapitals) {
    const unsigned char small = capital | 0x20;
    table[capital] = small;
    table[small] = small;
  }
  return table;
}

constexpr std::array<unsigned char, 256> kAccents = makeAccentTable();

// Converts bytes to lower case, by the locale that was the global one at its construction.
class Lower {
 public:
  char operator()(char c) const {
    const unsigned char folded = kAccents[static_cast<unsigned char>(c)];
    return folded != 0 ? static_cast<char>(folded) : letters_.tolower(c);
  }

 private:
  std::locale locale_;
  const std::ctype<char>& letters_ = std::use_facet<std::ctype<char>>(locale_);
};

}  // namespace

std::string& lowerCase(std::string& text) {
  const Lower lower;
  for (char& c : text) c = lower(c);
  return text;
}

bool equalIgnoringCase(std::string_view first, std::string_view second) {
  // Most equal texts are equal byte by byte, which needs no locale.
  if (first == second) return true;
  const Lower lower;
  return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace FileSystem::Detail
