#pragma once
// Letter case of characters, without a locale.

namespace platform::native {

// Returns the lower-case form of a Latin, Greek, Cyrillic, Armenian or full-width capital, and any
// other character unchanged. Wildcards, lstrcmpiA and the keys of version resources use it, so that
// they agree on which names are equal.
char32_t foldCase(char32_t character);

}  // namespace platform::native
