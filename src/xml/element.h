#pragma once
// Finding an element by substring search, as reading and taking out do it.

#include <optional>
#include <string>
#include <string_view>

namespace FileSystem::Xml::Detail {

// The start tag of the first element whose name begins with a text.
struct StartTag {
  std::size_t position = 0;      // of its `<`
  std::size_t nameEnd = 0;       // behind the name
  std::size_t contentStart = 0;  // behind its `>`
};

std::optional<StartTag> findStartTag(std::string_view text, std::string_view name);

// Position of the first closing tag of a name; npos if there is none.
std::size_t findClosingTag(std::string_view text, std::string_view name);

// Size in bytes of the closing tag of a name.
std::size_t closingTagSize(std::string_view name);

// Pairs each further start tag in the element with one more closing tag, from
// the first closing tag on. Every step goes on by `step` bytes, which must not
// be 0. Gives the position of the element's own closing tag, or npos if there
// are not enough of them.
std::size_t pairClosingTag(std::string_view text, std::string_view name, std::size_t contentStart,
                           std::size_t firstClosing, std::size_t step);

}  // namespace FileSystem::Xml::Detail
