#include "wildcard.h"

#include "paths.h"
#include "text.h"

namespace {

bool equalIn(const std::string& name, std::size_t at, char c) {
  return c == '?' || name[at] == c || (isSeparator(name[at]) && isSeparator(c));
}

// Length in bytes of the character at `at`.
std::size_t characterLength(const std::string& name, std::size_t at) {
  std::size_t next = at;
  nextCodePoint(name, next);
  return next - at;
}

}  // namespace

// A `*` takes as little as it can; on a mismatch the last one takes a character more.
bool matches(const std::string& pattern, const std::string& name) {
  std::size_t p = 0;
  std::size_t n = 0;
  std::size_t star = std::string::npos;
  std::size_t starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starName = n;
    } else if (p < pattern.size() && equalIn(name, n, pattern[p])) {
      n += pattern[p] == '?' ? characterLength(name, n) : 1;
      ++p;
    } else if (star != std::string::npos) {
      p = star;
      n = ++starName;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string::npos;
}
