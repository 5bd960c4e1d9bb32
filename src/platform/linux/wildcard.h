#pragma once
// Wildcards as the platform's file search understands them.

#include <string>
#include <string_view>

namespace platform::native {

// A pattern of `*` (any text) and `?` (one character, or none at a dot or the
// end). `*.*` matches every name and `*.` those without a dot; a dot in front of
// a wildcard also stands for the missing extension. Letter case is ignored, in
// ASCII and the Latin, Greek and Cyrillic letters.
class Wildcard {
 public:
  explicit Wildcard(std::string_view pattern);
  // The time is bounded by the product of both lengths.
  bool matches(std::string_view name) const;

 private:
  std::u32string pattern_;
  bool withoutDot_ = false;
};

inline bool hasWildcards(std::string_view pattern) {
  return pattern.find_first_of("*?") != std::string_view::npos;
}

}  // namespace platform::native
