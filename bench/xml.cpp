// XML as plain text, compared with chains of replacements and with a parser.

#include <filesystem/xml.h>

#include <boost/algorithm/string/replace.hpp>
#include <memory>
#include <pugixml.hpp>
#include <string_view>

#include "benchmarks.h"

namespace Xml = FileSystem::Xml;

namespace bench {
namespace {

constexpr std::size_t kText = 10'000'000;

using TextOf = std::function<std::string(std::size_t)>;

// Returns text of characters that are all escaped.
std::string denseText(std::size_t size) {
  std::string text;
  while (text.size() < size) text += "<&>\"'";
  return text;
}

struct StringWriter : pugi::xml_writer {
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }
  std::string text;
};

std::string escapedByPugi(const std::string& text) {
  pugi::xml_document document;
  document.append_child("e").text().set(text.c_str());
  StringWriter writer;
  document.print(writer, "", pugi::format_raw);
  return std::move(writer.text);
}

std::string unescapedByPugi(const std::string& element) {
  pugi::xml_document document;
  document.load_buffer(element.data(), element.size(), pugi::parse_escapes);
  return document.child("e").text().get();
}

std::string escapedByBoost(std::string text) {
  boost::replace_all(text, "&", "&amp;");
  boost::replace_all(text, "<", "&lt;");
  boost::replace_all(text, ">", "&gt;");
  boost::replace_all(text, "\"", "&quot;");
  boost::replace_all(text, "'", "&apos;");
  return text;
}

std::string unescapedByBoost(std::string text) {
  boost::replace_all(text, "&lt;", "<");
  boost::replace_all(text, "&gt;", ">");
  boost::replace_all(text, "&amp;", "&");
  boost::replace_all(text, "&apos;", "'");
  boost::replace_all(text, "&quot;", "\"");
  return text;
}

using Convert = std::function<std::string(const std::string&)>;

Run converting(std::shared_ptr<const std::string> text, Convert convert) {
  return [=] { return timed([&] { keep(convert(*text)); }); };
}

Operation escaping(const std::string& kind, std::size_t size, const TextOf& textOf) {
  const auto whole = std::make_shared<const std::string>(textOf(size));
  return {.name = "toXml, 10 MB " + kind,
          .target = 0.2,
          .ours =
              [=](int eighths) {
                const std::string text =
                    whole->substr(0, size / 8 * static_cast<std::size_t>(eighths));
                return timed([&] { keep(Xml::toXml(text)); });
              },
          .peers = {{"boost::replace_all", converting(whole, escapedByBoost)},
                    {"pugixml", converting(whole, escapedByPugi)}},
          .note = {}};
}

Operation unescaping(const std::string& kind, std::size_t size, const TextOf& textOf) {
  const auto whole = std::make_shared<const std::string>(Xml::toXml(textOf(size)));
  const auto element = std::make_shared<const std::string>("<e>" + *whole + "</e>");
  return {.name = "fromXml, 10 MB " + kind,
          .target = 0.2,
          .ours =
              [=](int eighths) {
                const std::string text =
                    whole->substr(0, whole->size() / 8 * static_cast<std::size_t>(eighths));
                return timed([&] { keep(Xml::fromXml(text)); });
              },
          .peers = {{"boost::replace_all", converting(whole, unescapedByBoost)},
                    {"pugixml", converting(element, unescapedByPugi)}},
          .note = {}};
}

// Returns a document of records, with the wanted element after all of them.
std::string document(std::size_t size) {
  std::string text = "<records>\n";
  for (int i = 0; text.size() < size; ++i) {
    const std::string number = std::to_string(i);
    text += "  <record id=\"" + number + "\"><name>name " + number +
            "</name><value>some value of this record</value></record>\n";
  }
  return text + "  <wanted>content</wanted>\n</records>\n";
}

Operation finding(std::size_t size) {
  const auto whole = std::make_shared<const std::string>(document(size));
  return {.name = "xmlContent in 10 MB",
          .target = 0.2,
          .ours =
              [=](int eighths) {
                const std::string text =
                    eighths == 8 ? *whole : document(size / 8 * static_cast<std::size_t>(eighths));
                return timed([&] {
                  require(Xml::xmlContent(text, "wanted", false) == "content", "xmlContent");
                });
              },
          .peers = {{"pugixml",
                     [=] {
                       return timed([&] {
                         pugi::xml_document parsed;
                         parsed.load_buffer(whole->data(), whole->size());
                         const pugi::xml_node found = parsed.find_node([](pugi::xml_node node) {
                           return std::string_view(node.name()) == "wanted";
                         });
                         require(std::string_view(found.child_value()) == "content", "pugixml");
                       });
                     }}},
          .note = {}};
}

// Small calls in a row are one round.
constexpr std::size_t kCalls = 100'000;

Operation findingInLittle(std::size_t calls) {
  const auto text = std::make_shared<const std::string>("<user id=\"7\"><name>Ann</name></user>");
  return {.name = "xmlContent in 37 bytes, 100,000 calls",
          .target = 1.0,
          .ours =
              [=](int eighths) {
                return timed([&] {
                  for (std::size_t i = calls / 8 * static_cast<std::size_t>(eighths); i > 0; --i) {
                    require(Xml::xmlContent(*text, "name", false) == "Ann", "xmlContent");
                  }
                });
              },
          .peers = {{"pugixml",
                     [=] {
                       return timed([&] {
                         for (std::size_t i = calls; i > 0; --i) {
                           pugi::xml_document parsed;
                           parsed.load_buffer(text->data(), text->size());
                           require(std::string_view(
                                       parsed.child("user").child("name").child_value()) == "Ann",
                                   "pugixml");
                         }
                       });
                     }}},
          .note = {}};
}

// The peer is the least that finding the element needs.
Operation findingTheFirst(std::size_t size) {
  const auto whole = std::make_shared<const std::string>(document(size));
  return {.name = "xmlContent of the first element in 10 MB",
          .target = 4.0,
          .ours =
              [=](int eighths) {
                const std::string text =
                    whole->substr(0, size / 8 * static_cast<std::size_t>(eighths));
                return timed([&] {
                  require(Xml::xmlContent(text, "name", false) == "name 0", "xmlContent");
                });
              },
          .peers = {{"std::string::find of the tags",
                     [=] {
                       return timed([&] {
                         const std::size_t start = whole->find('>', whole->find("<name")) + 1;
                         const std::size_t end = whole->find("</name>", start);
                         require(whole->substr(start, end - start) == "name 0", "find");
                       });
                     }}},
          .note = {}};
}

Operation readingAll(std::size_t size) {
  const auto whole = std::make_shared<const std::string>(document(size));
  return {.name = "ElementCursor over all elements in 10 MB",
          .target = 1.0,
          .ours =
              [=](int eighths) {
                const std::string text = document(size / 8 * static_cast<std::size_t>(eighths));
                return timed([&] {
                  std::size_t bytes = 0;
                  Xml::ElementCursor names(text, "name");
                  while (names.next()) bytes += names.content().size();
                  require(bytes > 0, "ElementCursor");
                });
              },
          .peers = {{"pugixml",
                     [=] {
                       return timed([&] {
                         pugi::xml_document parsed;
                         parsed.load_buffer(whole->data(), whole->size());
                         std::size_t bytes = 0;
                         for (const pugi::xml_node record : parsed.child("records")) {
                           bytes += std::string(record.child("name").child_value()).size();
                         }
                         require(bytes > 0, "pugixml");
                       });
                     }}},
          .note = {}};
}

}  // namespace

std::vector<Operation> xmlOperations(std::size_t scale) {
  const std::size_t size = kText / scale;
  return {escaping("text", size, sourceText),
          escaping("dense", size, denseText),
          unescaping("text", size, sourceText),
          unescaping("dense", size, denseText),
          finding(size),
          findingInLittle(kCalls / scale),
          findingTheFirst(size),
          readingAll(size)};
}

}  // namespace bench
