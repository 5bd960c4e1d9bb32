#include "xml/element.h"

#include <boost/format.hpp>

#include "xml/text_search.h"

namespace FileSystem::Xml::Detail {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

std::string openingText(std::string_view name) { return str(boost::format("<%s") % name); }

std::string closingText(std::string_view name) { return str(boost::format("</%s>") % name); }

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
  std::size_t next = findText(text, opening, contentStart);
  while (end != kNone && next < end) {
    end = findText(text, closing, end + step);
    next = findText(text, opening, next + step);
  }
  return end;
}

}  // namespace FileSystem::Xml::Detail
