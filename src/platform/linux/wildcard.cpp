#include "platform/linux/wildcard.h"

#include "platform/utf8.h"

namespace platform::native {
namespace {

// What stands for itself can have any value but these.
constexpr char32_t kAny = 0xFFFFFF00;           // `*`
constexpr char32_t kOneOrNone = 0xFFFFFF01;     // `?`
constexpr char32_t kAnyToLastDot = 0xFFFFFF03;  // `*` in front of such a dot
constexpr char32_t kDotOrEnd = 0xFFFFFF02;      // `.` in front of a wildcard

char32_t lower(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 0x20 : c;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 0x20;
  if (c >= 0x100 && c <= 0x137 && c != 0x130) return c | 1;
  if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return c + (c & 1);
  if (c >= 0x14A && c <= 0x177) return c | 1;
  if (c == 0x178) return 0xFF;
  if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return c + 0x20;
  if (c >= 0x400 && c <= 0x40F) return c + 0x50;
  if (c >= 0x410 && c <= 0x42F) return c + 0x20;
  return c;
}

// Takes the character at a position, and moves it behind that.
char32_t take(std::string_view text, std::size_t& at) {
  std::string_view rest = text.substr(at);
  const char32_t character = takeUtf8(rest);
  at = text.size() - rest.size();
  return character;
}

}  // namespace

Wildcard::Wildcard(std::string_view pattern) {
  if (pattern == "*.*") pattern = "*";
  if (pattern.size() > 1 && pattern.ends_with("*.")) {
    withoutDot_ = true;
    pattern.remove_suffix(1);
  }
  for (std::size_t at = 0; at < pattern.size();) {
    const char32_t c = take(pattern, at);
    const bool beforeWildcard = at < pattern.size() && (pattern[at] == '*' || pattern[at] == '?');
    if (c == '*') {
      if (pattern_.empty() || pattern_.back() != kAny) pattern_ += kAny;
    } else if (c == '?') {
      pattern_ += kOneOrNone;
    } else if (c == '.' && beforeWildcard) {
      if (!pattern_.empty() && pattern_.back() == kAny) pattern_.back() = kAnyToLastDot;
      pattern_ += kDotOrEnd;
    } else {
      pattern_ += lower(c);
    }
  }
}

bool Wildcard::matches(std::string_view name) const {
  if (withoutDot_ && name.find('.') != std::string_view::npos) return false;
  std::size_t p = 0;
  std::size_t n = 0;
  // Where to go on when what follows the last `*` does not fit.
  std::size_t afterAny = std::u32string::npos;
  std::size_t anyEnd = 0;
  std::size_t anyLimit = 0;
  for (;;) {
    const bool atEnd = n == name.size();
    if (p == pattern_.size()) {
      if (atEnd) return true;
    } else if (pattern_[p] == kAny && p + 1 == pattern_.size()) {
      return true;
    } else if (pattern_[p] == kAny || pattern_[p] == kAnyToLastDot) {
      const std::size_t lastDot = pattern_[p] == kAny ? name.npos : name.rfind('.');
      anyLimit = lastDot == name.npos || lastDot < n ? name.size() : lastDot;
      afterAny = ++p;
      anyEnd = n;
      continue;
    } else if ((pattern_[p] == kOneOrNone && (atEnd || name[n] == '.')) ||
               (pattern_[p] == kDotOrEnd && atEnd)) {
      ++p;
      continue;
    } else if (!atEnd) {
      std::size_t next = n;
      const char32_t c = lower(take(name, next));
      const char32_t wanted = pattern_[p] == kDotOrEnd ? U'.' : pattern_[p];
      if (wanted == kOneOrNone || wanted == c) {
        ++p;
        n = next;
        continue;
      }
    }
    // The `*` takes one character more.
    if (afterAny == std::u32string::npos || anyEnd == anyLimit) return false;
    take(name, anyEnd);
    n = anyEnd;
    p = afterAny;
  }
}

}  // namespace platform::native
