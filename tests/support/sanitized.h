#pragma once

namespace support {

// Whether a sanitizer watches the tests. Under one a process takes ten times as long to start, and
// code several times as long to run, so that tests of many similar steps take fewer of them.
inline constexpr bool kSanitized = sizeof(VESK_SANITIZE) > 1;

}  // namespace support
