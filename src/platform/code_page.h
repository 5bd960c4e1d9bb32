#pragma once
// Text from one code page to another.

#include <string>

#include "platform/win32.h"

namespace platform {

// Empty if the text cannot be converted. A character without a counterpart
// comes out as the platform makes it.
std::string convertCodePage(const std::string& text, UINT from, UINT to);

}  // namespace platform
