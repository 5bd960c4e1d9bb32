#include <filesystem/xml.h>

#include "xml/element.h"
#include "xml/text_search.h"

namespace FileSystem::Xml {
namespace {

std::string_view attributeValue(std::string_view text, std::string_view tag,
                                std::string_view attribute) {
  const auto start = Detail::findStartTag(text, tag);
  if (!start) return {};
  std::string_view header;
  // A raw name may include the `>` that ends the tag.
  if (start->nameEnd < start->contentStart) {
    header = text.substr(start->nameEnd, start->contentStart - 1 - start->nameEnd);
  }
  // Without the attribute, the second search begins at npos and finds nothing.
  const std::size_t equals = header.find('=', header.find(attribute));
  if (equals == kNone) return {};
  // The next byte is taken for the opening quote, whatever it is.
  const std::size_t value = equals + 2;
  const std::size_t quote = header.find('"', value);
  if (quote == kNone) return {};
  return header.substr(value, quote - value);
}

}  // namespace

std::string xmlContent(const std::string& text, const std::string& tag, bool wholeElement) {
  if (tag.empty()) return {};
  const std::string name = toXmlTag(tag);
  const auto start = Detail::findStartTag(text, name);
  if (!start) return {};
  const std::size_t closing = Detail::findEndTag(text, name);
  if (closing == kNone || closing <= start->contentStart) return {};
  const std::size_t end = Detail::pairEndTag(text, name, start->contentStart, closing, tag.size());
  if (end == kNone) return {};
  if (wholeElement) {
    return text.substr(start->position, end + Detail::endTagSize(name) - start->position);
  }
  return fromXml(text.substr(start->contentStart, end - start->contentStart));
}

std::string xmlAttribute(const std::string& text, const std::string& tag,
                         const std::string& attribute) {
  return fromXml(std::string(attributeValue(text, toXmlTag(tag), toXmlTag(attribute))));
}

std::string Raw::xmlContent(const std::string& text, const std::string& tag) {
  const auto start = Detail::findStartTag(text, tag);
  if (!start) return {};
  const std::size_t closing = Detail::findEndTag(text, tag);
  if (closing == kNone || closing <= start->contentStart) return {};
  return text.substr(start->contentStart, closing - start->contentStart);
}

std::string Raw::xmlAttribute(const std::string& text, const std::string& tag,
                              const std::string& attribute) {
  return std::string(attributeValue(text, tag, attribute));
}

}  // namespace FileSystem::Xml
