// A name is matched by following all positions of the pattern at once. Trying one position after
// the other and going back to the last `*` is not enough here: in `*a*.?` the second `*` must not
// match the last dot, but the first one may.

#include "platform/linux/names/wildcard.h"

#include <algorithm>

#include "platform/linux/names/case_folding.h"
#include "platform/utf8.h"

namespace platform::native {
namespace {

// Elements of a pattern other than characters, which are less than these.
constexpr char32_t kAny = 0xFFFFFF00;            // `*`
constexpr char32_t kAnyButLastDot = 0xFFFFFF01;  // `*` before a kDotOrEnd
constexpr char32_t kOneOrNone = 0xFFFFFF02;      // `?`
constexpr char32_t kDotOrEnd = 0xFFFFFF03;       // `.` before a wildcard

std::string_view withoutTrailing(std::string_view pattern) {
  return pattern.substr(0, pattern.find_last_not_of(". ") + 1);
}

}  // namespace

Wildcard::Wildcard(std::string_view pattern) {
  bool endsInDot = pattern.ends_with('.');
  pattern = withoutTrailing(pattern);
  if (pattern == "*.*") {
    pattern = "*";
    endsInDot = false;
  }
  int stars = 0;  // directly before the current character
  while (!pattern.empty()) {
    const char32_t c = takeUtf8(pattern);
    const bool beforeWildcard = pattern.starts_with('*') || pattern.starts_with('?');
    if (c == U'*') {
      // Two of them match the same as one.
      if (++stars == 1) pattern_ += kAny;
      continue;
    }
    if (c == U'.' && beforeWildcard) {
      if (stars == 1) pattern_.back() = kAnyButLastDot;
      pattern_ += kDotOrEnd;
    } else {
      pattern_ += c == U'?' ? kOneOrNone : foldCase(c);
    }
    stars = 0;
  }
  if (endsInDot && stars == 1) pattern_.back() = kAnyButLastDot;
  reached_.resize(pattern_.size() + 1);
  next_.resize(pattern_.size() + 1);
}

void Wildcard::skip(Positions& positions, bool atDot, bool atEnd) const {
  for (std::size_t at = 0; at < pattern_.size(); ++at) {
    const char32_t element = pattern_[at];
    const bool matchesNothing = element == kAny || element == kAnyButLastDot ||
                                (element == kOneOrNone && (atDot || atEnd)) ||
                                (element == kDotOrEnd && atEnd);
    if (positions[at] != 0 && matchesNothing) positions[at + 1] = 1;
  }
}

bool Wildcard::take(char32_t character, bool isLastDot) {
  const bool isDot = character == U'.';
  std::fill(next_.begin(), next_.end(), 0);
  bool any = false;
  for (std::size_t at = 0; at < pattern_.size(); ++at) {
    if (reached_[at] == 0) continue;
    const char32_t element = pattern_[at];
    const bool stays = element == kAny || (element == kAnyButLastDot && !isLastDot);
    const bool advances = element == character || (element == kOneOrNone && !isDot) ||
                          (element == kDotOrEnd && isDot);
    if (stays) next_[at] = 1;
    if (advances) next_[at + 1] = 1;
    any = any || stays || advances;
  }
  reached_.swap(next_);
  return any;
}

bool Wildcard::matches(std::string_view name) {
  if (pattern_.size() == 1 && pattern_.front() == kAny) return true;
  // Dots at the start begin no extension: they are not in the short names, which Windows also
  // matches.
  std::size_t lastDot = name.rfind('.');
  if (lastDot < name.find_first_not_of('.')) lastDot = std::string_view::npos;
  std::fill(reached_.begin(), reached_.end(), 0);
  reached_.front() = 1;
  for (std::string_view rest = name; !rest.empty();) {
    const std::size_t at = name.size() - rest.size();
    const char32_t character = foldCase(takeUtf8(rest));
    skip(reached_, character == U'.', false);
    if (!take(character, at == lastDot)) return false;
  }
  skip(reached_, false, true);
  return reached_.back() != 0;
}

}  // namespace platform::native
