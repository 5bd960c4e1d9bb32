#pragma once
// Wildcards as Windows' file search understands them.

#include <string>
#include <string_view>
#include <vector>

namespace platform::native {

// A pattern of `*` (any text) and `?` (one character, or none before a dot and at the end of the
// name). Letter case is ignored. The rules date from names of eight and three characters:
//
//   `*.*`           matches every name
//   `*.`            matches the names without an extension; dots at the start begin none
//   `.` before a    also matches the end of the name, so that `a.*` matches `a`; a `*` before such
//   a wildcard        dot does not match past the last dot of the name
//   `*.txt. `       trailing dots and spaces are dropped
class Wildcard {
 public:
  explicit Wildcard(std::string_view pattern);
  // Takes time in proportion to the product of both lengths. `name` is UTF-8.
  bool matches(std::string_view name);

 private:
  using Positions = std::vector<char>;  // in pattern_, each reached or not

  // Adds the positions that are reached without taking a character of the name.
  void skip(Positions& positions, bool atDot, bool atEnd) const;
  // Takes a character; returns false if no position is left.
  bool take(char32_t character, bool isLastDot);

  std::u32string pattern_;
  Positions reached_;
  Positions next_;
};

inline bool hasWildcards(std::string_view pattern) {
  return pattern.find_first_of("*?") != std::string_view::npos;
}

}  // namespace platform::native
