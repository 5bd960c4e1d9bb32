#pragma once
// The library's lower-casing of narrow text, byte for byte, so that the length
// stays.

#include <string>
#include <string_view>

namespace FileSystem::Detail {

// Folds the accented capitals of Western European languages as Windows-1252
// encodes them, whatever the code page, and every other byte by the global
// locale of the moment. Changes `text` in place and gives it back.
std::string& lowerCase(std::string& text);

std::string lowerCaseCopy(const std::string& text);

// Whether two texts are the same once they are lower-cased.
bool equalIgnoringCase(std::string_view first, std::string_view second);

}  // namespace FileSystem::Detail
