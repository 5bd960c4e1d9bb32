#pragma once
// Conversion between code pages.

#include <string>

#include "platform/win32.h"

namespace platform {

// Returns the text in another code page, or an empty text if it cannot be converted. A character
// that the code page lacks is replaced as the platform does it.
std::string convertCodePage(const std::string& text, UINT from, UINT to);

}  // namespace platform
