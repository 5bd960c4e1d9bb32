#include <filesystem/xml.h>

#include <boost/format.hpp>
#include <utility>

#include "xml/element.h"

namespace FileSystem::Xml {
namespace {

// Removes a range of the text and returns `piece`.
std::string remove(std::string& text, std::size_t start, std::size_t end, std::string piece) {
  text.erase(start, end - start);
  return piece;
}

}  // namespace

std::string xmlDefine(const std::string& tag, const std::string& value) {
  const std::string name = toXmlTag(tag);
  if (value.empty()) return str(boost::format("<%s />") % name);
  return str(boost::format("<%s>%s</%s>") % name % toXml(value) % name);
}

std::string xmlExtract(std::string& text, const std::string& tag, bool wholeElement) {
  if (tag.empty()) return {};
  const std::string name = toXmlTag(tag);
  const auto start = Detail::findStartTag(text, name);
  if (!start) return {};
  const std::size_t contentStart = start->contentStart;

  const bool isEmptyElementTag = text[contentStart - 2] == '/';
  if (isEmptyElementTag) {
    std::string piece =
        wholeElement ? text.substr(start->position, contentStart - start->position) : "";
    return remove(text, start->position, contentStart, std::move(piece));
  }

  const std::size_t closing = Detail::findEndTag(text, name);
  if (closing == std::string::npos || closing < contentStart) return {};
  if (closing == contentStart && !wholeElement) return {};
  const std::size_t last = Detail::pairEndTag(text, name, contentStart, closing, tag.size());
  if (last == std::string::npos) return {};
  const std::size_t end = last + Detail::endTagSize(name);
  std::string piece = wholeElement ? text.substr(start->position, end - start->position)
                                   : fromXml(text.substr(contentStart, last - contentStart));
  return remove(text, start->position, end, std::move(piece));
}

}  // namespace FileSystem::Xml
