// Fuzzes the XML text functions. The first line of the input is the tag, the second the attribute,
// and the rest the text.

#include <filesystem/xml.h>

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace FileSystem::Xml;
  std::string_view rest = fuzz::textOf(data, size);
  const std::string tag = fuzz::takeLine(rest);
  const std::string attribute = fuzz::takeLine(rest);
  const std::string text(rest);

  fuzz::require(fromXml(text).size() <= text.size(), "unescaping never grows the text");
  fuzz::require(toXml(text).find_first_of("<>'\"") == std::string::npos, "escaping is complete");
  toXmlTag(text);
  xmlAttribute(text, tag, attribute);
  const auto requirePart = [&](const std::string& piece) {
    fuzz::require(text.find(piece) != std::string::npos, "the result is a part of the text");
  };
  requirePart(Raw::xmlContent(text, tag));
  requirePart(Raw::xmlAttribute(text, tag, attribute));
  requirePart(xmlContent(text, tag, true));
  fuzz::require(xmlContent(text, tag, false).size() <= text.size(),
                "content is never longer than the text");

  for (const bool whole : {true, false}) {
    // Removes all elements, one with each call.
    std::string left = text;
    for (std::size_t before = left.size() + 1; left.size() < before;) {
      before = left.size();
      const std::string piece = xmlExtract(left, tag, whole);
      fuzz::require(left.size() <= before, "extraction never grows the text");
      fuzz::require(!whole || left.size() + piece.size() == before, "nothing else is removed");
      if (left.size() > 4096) break;
    }
  }

  const std::string element = xmlDefine(tag, text);
  const bool plainTag = !tag.empty() && tag.find_first_of("<>/") == std::string::npos;
  // A tag with markup in it could contain its own end tag.
  if (plainTag && !text.empty() && !toXml(text).empty()) {
    fuzz::require(xmlContent(element, tag, true) == element,
                  "an element that was written is found");
  }
  const std::string path = fuzz::Workplace::instance().write("a.xml", data, size);
  FileSystem::isFileXml(path.c_str());
  return 0;
}
