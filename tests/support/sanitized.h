#pragma once

namespace support {

// Whether a sanitizer watches the tests. Under one a process takes ten times as long to start, and
// code several times as long to run.
inline constexpr bool kSanitized = sizeof(VESK_SANITIZE) > 1;

// Whether tests of many similar steps take fewer of them: under a sanitizer, and where another system
// is emulated, which opens files several times more slowly.
inline constexpr bool kFewSteps = kSanitized || VESK_EMULATED;

}  // namespace support
