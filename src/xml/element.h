#pragma once
// Finding an element by substring search, for reading and for extraction.

#include <optional>
#include <string>
#include <string_view>

namespace FileSystem::Xml::Detail {

// Offsets of a start tag.
struct StartTag {
  std::size_t position = 0;      // of its `<`
  std::size_t nameEnd = 0;       // after the name
  std::size_t contentStart = 0;  // after its `>`
};

// Finds the first start tag whose name begins with `name`.
std::optional<StartTag> findStartTag(std::string_view text, std::string_view name);

// Returns the position of the first end tag of a name in the text, or npos.
std::size_t findEndTag(std::string_view text, std::string_view name);

// Returns the size of the end tag of a name in bytes.
std::size_t endTagSize(std::string_view name);

// Returns the position of the end tag of an element, or npos if there are too few end tags.
// Beginning with the first one, takes one more end tag for each start tag before it. Both searches
// continue `step` bytes after the position found last; `step` must not be 0.
//
//   <a> 1 <a> 2 </a> 3 </a>
//      ^contentStart  ^firstEndTag
//         ^one more start tag before it: take the next end tag
//                       ^result
std::size_t pairEndTag(std::string_view text, std::string_view name, std::size_t contentStart,
                       std::size_t firstEndTag, std::size_t step);

}  // namespace FileSystem::Xml::Detail
