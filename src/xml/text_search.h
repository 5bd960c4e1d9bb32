#pragma once
// Finding a text in a text.

#include <cstddef>
#include <string_view>

namespace FileSystem::Xml::Detail {

// As text.find(searched, start), but faster where the first byte of what is
// searched is frequent, as `<` is.
std::size_t findText(std::string_view text, std::string_view searched, std::size_t start = 0);

}  // namespace FileSystem::Xml::Detail
