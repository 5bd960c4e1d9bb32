#include "path/lower_case.h"

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

}  // namespace

std::string& lowerCase(std::string& text) {
  const std::locale locale;
  const auto& letters = std::use_facet<std::ctype<char>>(locale);
  for (char& c : text) {
    const unsigned char folded = kAccents[static_cast<unsigned char>(c)];
    c = folded != 0 ? static_cast<char>(folded) : letters.tolower(c);
  }
  return text;
}

bool equalIgnoringCase(std::string_view first, std::string_view second) {
  if (first == second) return true;
  if (first.size() != second.size()) return false;
  return lowerCaseCopy(std::string(first)) == lowerCaseCopy(std::string(second));
}

std::string lowerCaseCopy(const std::string& text) {
  std::string copy = text;
  lowerCase(copy);
  return copy;
}

}  // namespace FileSystem::Detail
