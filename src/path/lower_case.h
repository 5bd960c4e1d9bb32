#pragma once
// Lower-casing, byte for byte: the size of a text does not change.

#include <string>
#include <string_view>

namespace FileSystem::Detail {

// Lower-cases `text` in place and returns it. Converts 13 accented capitals of Windows-1252 in any
// code page, and all other bytes by the current global locale.
std::string& lowerCase(std::string& text);

// Reports whether two texts are equal in lower case.
bool equalIgnoringCase(std::string_view first, std::string_view second);

}  // namespace FileSystem::Detail
