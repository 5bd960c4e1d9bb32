// The XML text functions. The first line is the tag, the second the attribute,
// and the rest the text.

#include <filesystem/xml.h>

#include "workplace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace FileSystem::Xml;
  std::string_view rest = fuzz::textOf(data, size);
  const std::string tag = fuzz::takeLine(rest);
  const std::string attribute = fuzz::takeLine(rest);
  const std::string text(rest);

  fuzz::require(fromXml(text).size() <= text.size(), "undoing never grows");
  fuzz::require(toXml(text).find_first_of("<>'\"") == std::string::npos, "escaping is complete");
  toXmlTag(text);
  xmlAttribute(text, tag, attribute);
  const auto standsInText = [&](const std::string& piece) {
    fuzz::require(text.find(piece) != std::string::npos, "a piece of the text stands in it");
  };
  standsInText(Raw::xmlContent(text, tag));
  standsInText(Raw::xmlAttribute(text, tag, attribute));
  standsInText(xmlContent(text, tag, true));
  fuzz::require(xmlContent(text, tag, false).size() <= text.size(), "content never grows");

  for (const bool whole : {true, false}) {
    // Takes all elements out, each with one call.
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
  // The tag of an element that holds its own closing text is no name.
  if (plainTag && !text.empty() && !toXml(text).empty()) {
    fuzz::require(xmlContent(element, tag, true) == element, "what was written is found");
  }
  const std::string path = fuzz::Workplace::instance().write("a.xml", data, size);
  FileSystem::isFileXml(path.c_str());
  return 0;
}
