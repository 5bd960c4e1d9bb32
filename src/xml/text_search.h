#pragma once

#include <cstddef>
#include <string_view>

namespace FileSystem::Xml {

// The position of what a text does not have.
inline constexpr std::size_t kNone = std::string_view::npos;

namespace Detail {

// Does the same as text.find(searched, start), but faster if the first byte of `searched` is
// frequent in the text, as `<` is in XML.
std::size_t findText(std::string_view text, std::string_view searched, std::size_t start = 0);

}  // namespace Detail
}  // namespace FileSystem::Xml
