#include "xml/element.h"

#include "xml/text_search.h"

namespace FileSystem::Xml::Detail {
namespace {

// boost::format("<%s") and boost::format("</%s>") would take eight times as many instructions as the
// whole search in a short text.
std::string openingText(std::string_view name) { return std::string("<").append(name); }

std::string closingText(std::string_view name) {
  return std::string("</").append(name).append(1, '>');
}

}  // namespace

std::optional<StartTag> findStartTag(std::string_view text, std::string_view name) {
  const std::size_t position = findText(text, openingText(name));
  // Without a start tag, this search begins at npos and finds nothing.
  const std::size_t end = text.find('>', position);
  if (end == kNone) return std::nullopt;
  return StartTag{
      .position = position, .nameEnd = position + 1 + name.size(), .contentStart = end + 1};
}

std::size_t findEndTag(std::string_view text, std::string_view name) {
  return findText(text, closingText(name));
}

std::size_t endTagSize(std::string_view name) { return name.size() + 3; }

std::size_t pairEndTag(std::string_view text, std::string_view name, std::size_t contentStart,
                       std::size_t firstEndTag, std::size_t step) {
  const std::string opening = openingText(name);
  const std::string closing = closingText(name);
  std::size_t end = firstEndTag;
  std::size_t next = contentStart;
  while (end != kNone) {
    // Only a start tag before the end tag counts, so that the rest of the text is not searched.
    next = findText(text.substr(0, end), opening, next);
    if (next == kNone) break;
    end = findText(text, closing, end + step);
    next += step;
  }
  return end;
}

}  // namespace FileSystem::Xml::Detail
