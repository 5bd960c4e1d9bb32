// Wildcard matching: the first line is the pattern, the rest the name.

#include "platform/linux/names/wildcard.h"

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using platform::native::Wildcard;
  std::string_view rest = fuzz::textOf(data, size);
  const std::string pattern = fuzz::takeLine(rest);
  const std::string name(rest);

  const bool matches = Wildcard(pattern).matches(name);
  fuzz::require(Wildcard("*").matches(name) && Wildcard("*.*").matches(name), "all match all");
  // Dots and spaces at the end of a pattern are dropped.
  const bool endsInOthers = name.empty() || (name.back() != '.' && name.back() != ' ');
  if (!platform::native::hasWildcards(name) && endsInOthers) {
    fuzz::require(Wildcard(name).matches(name), "a name matches itself");
  }
  std::string otherCase = name;
  for (char& c : otherCase) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) c = static_cast<char>(c ^ 0x20);
  }
  fuzz::require(Wildcard(pattern).matches(otherCase) == matches, "letter case plays no part");
  return 0;
}
