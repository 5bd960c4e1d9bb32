#include <filesystem/path.h>
#include <filesystem/xml.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;
using namespace FileSystem::Xml;

// Escapes byte by byte, as toXml is defined.
std::string toXmlByBytes(const std::string& text) {
  const std::string replaced = "<>&'\"";
  const char* const entities[] = {"&lt;", "&gt;", "&amp;", "&apos;", "&quot;"};
  std::string escaped;
  for (const char c : text) {
    const std::size_t at = replaced.find(c);
    if (at != std::string::npos) {
      escaped += entities[at];
    } else if (static_cast<unsigned char>(c) >= ' ' || std::strchr("\t\n\r", c) != nullptr) {
      escaped += c;  // zero bytes too: the terminator matches them
    }
  }
  return escaped;
}

// Replaces the entities kind by kind, as fromXml is defined. Searches from the beginning after each
// replacement.
std::string fromXmlByPasses(std::string text) {
  const std::pair<const char*, char> entities[] = {
      {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&quot;", '"'}};
  for (const auto& [entity, character] : entities) {
    const std::string searched = entity;
    for (std::size_t at; (at = text.find(searched)) != std::string::npos;) {
      text.replace(at, searched.size(), 1, character);
    }
  }
  return text;
}

TEST(Xml, Escaping) {
  EXPECT_EQ(toXml("<a k=\"1\">'&'"), "&lt;a k=&quot;1&quot;&gt;&apos;&amp;&apos;");
  EXPECT_EQ(toXml(std::string("\0\x01\t\x0B\x0C\n\r\x1F\x7F\xE9", 10)),
            std::string("\0\t\n\r\x7F\xE9", 6));
  EXPECT_EQ(toXml(""), "");
}

TEST(Xml, EscapingOfLongTexts) {
  // Every byte at every position in a block and after the last block.
  for (std::size_t at = 0; at < 300; ++at) {
    std::string text(300, 'x');
    for (int c = 0; c < 256; ++c) {
      text[at] = static_cast<char>(c);
      ASSERT_EQ(toXml(text), toXmlByBytes(text)) << "byte " << c << " at " << at;
    }
  }
  // All densities of replacements, since the size of the result is estimated.
  std::minstd_rand random(3);
  constexpr std::size_t kSizes[] = {127, 128, 129, 5000, 100000};
  for (unsigned percent = 0; percent <= 100; percent += 5) {
    for (const std::size_t size : kSizes) {
      std::string text;
      while (text.size() < size)
        text += random() % 100 < percent ? "<>&'\"\x01\n"[random() % 7] : 'x';
      ASSERT_EQ(toXml(text), toXmlByBytes(text)) << percent << " % of " << size;
    }
  }
  // Memory is reserved for what a text needs, and once: a new copy for each piece takes minutes.
  constexpr std::size_t kLarge = 3000000;
  for (const char end : {'x', '<', '&', '\''}) {
    const std::string escaped = toXml(std::string(kLarge, 'x') + std::string(kLarge, end));
    EXPECT_LT(escaped.capacity(), escaped.size() + escaped.size() / 7) << end;
  }
}

TEST(Xml, Unescaping) {
  struct {
    const char *text, *result;
  } const cases[] = {
      {"&lt;&gt;&amp;&apos;&quot;", "<>&'\""},
      {"&amp;lt;", "&lt;"},
      {"&amp;amp;amp;", "&"},
      {"&amp;amp;quot;", "\""},
      {"&#60;&LT;&nbsp;& &lt", "&#60;&LT;&nbsp;& &lt"},
  };
  for (const auto& c : cases) EXPECT_EQ(fromXml(c.text), c.result) << c.text;

  // Entities and parts of them at every position in a block, with long and short runs between them.
  std::minstd_rand random(1);
  const char* const pieces[] = {"&",    "amp;", "lt;",    "gt;",    "apos;", "quot;", "&amp;",
                                "&lt;", "&gt;", "&apos;", "&quot;", ";",     "am",    "p;"};
  for (int round = 0; round < 50000; ++round) {
    const std::size_t size = random() % (round % 16 == 0 ? 5000 : 40);
    const std::size_t longestRun = round % 4 == 0 ? 1 + random() % 100 : 1;
    std::string text;
    while (text.size() < size) {
      text.append(random() % longestRun, 'x').append(pieces[random() % std::size(pieces)]);
    }
    ASSERT_EQ(fromXml(text), fromXmlByPasses(text)) << text;
  }
  // Repeated passes would take hours.
  std::string dense = "&";
  for (int i = 0; i < 1000000; ++i) dense += "amp;";
  EXPECT_EQ(fromXml(dense), "&");
}

// The tables of substitutes and of accented capitals, byte by byte.
TEST(Xml, NamesOfEveryByte) {
  const std::string capitals = "\xC0\xC2\xC7\xC8\xC9\xCA\xCB\xCE\xCF\xD4\xD6\xD9\xDB";
  const std::string replaced =
      "\xE0\xE2\xE4\xE7\xE8\xE9\xEA\xEB\xF2\xF4\xF6\xF9\xFB\xFC !\"$%&'*+/<>?\\";
  const std::string substitutes = "aaaceeeeooouuu______________";
  const auto lower = [&](char c) {
    const bool isCapital = (c >= 'A' && c <= 'Z') || capitals.find(c) != std::string::npos;
    return std::string(1, static_cast<char>(isCapital ? c + 0x20 : c));
  };
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const std::size_t at = replaced.find(c);
    const std::string plain = at == std::string::npos ? lower(c) : substitutes.substr(at, 1);
    EXPECT_EQ(toXmlTag({c}), c == '@' ? "_at_" : plain);
    for (int other = 0; other < 256; ++other) {
      const char o = static_cast<char>(other);
      EXPECT_EQ(pathEqual({c}, {o}), lower(c) == lower(o)) << byte << ' ' << other;
    }
  }
  EXPECT_EQ(toXmlTag("My @\xC9t\xE9"), "my__at_\xE9te");
}

TEST(Xml, Content) {
  struct {
    const char *text, *tag, *content, *whole, *raw;
  } const cases[] = {
      {"<a>x</a>", "a", "x", "<a>x</a>", "x"},
      {"<a k=\"1\">x</a>", "a", "x", "<a k=\"1\">x</a>", "x"},
      {"<a>1<a>2</a>3</a>z", "a", "1<a>2</a>3", "<a>1<a>2</a>3</a>", "1<a>2"},
      {"<a></a>", "a", "", "", ""},
      {"<a/>", "a", "", "", ""},
      {"</a><a>x</a>", "a", "", "", ""},
      {"x</a>", "a", "", "", ""},
      {"<ab>x</ab><a>y</a>", "a", "", "", "x</ab><a>y"},
      {"<Name>x</Name>", "Name", "", "", "x"},
      {"<a>&lt;</a>", "a", "<", "<a>&lt;</a>", "&lt;"},
      {"<a b='</a>'>x</a>", "a", "", "", ""},
      {"<a><a><a>x</a></a>", "a", "", "", "<a><a>x"},
      {"<my_tag>x</my_tag>", "My Tag", "x", "<my_tag>x</my_tag>", ""},
      {"<>x</>", "", "", "", "x"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(xmlContent(c.text, c.tag, false), c.content) << c.text;
    EXPECT_EQ(xmlContent(c.text, c.tag, true), c.whole) << c.text;
    EXPECT_EQ(Raw::xmlContent(c.text, c.tag), c.raw) << c.text;
  }
}

TEST(Xml, ContentAtEveryPosition) {
  // Before the element is a text of any length that resembles its tags.
  for (const std::string& name : {std::string("abc"), std::string(100, 'n')}) {
    const std::string start = std::string("<") + name[0];
    const std::string other(name.size() - 2, '?');
    for (const std::string& decoy :
         {std::string("x"), std::string("</"), start + name.substr(1, other.size()) + '?',
          start + std::string(name.size(), '>'), start + other + name.back(),
          "</??" + other + '>'}) {
      std::string text;
      while (text.size() < 300) {
        const std::string element = '<' + name + '>' + text + "</" + name + '>';
        ASSERT_EQ(Raw::xmlContent(text + element + text, name), text) << name << " in " << text;
        text += decoy;
      }
    }
  }
}

TEST(Xml, Attributes) {
  struct {
    const char *text, *name, *value, *raw;
  } const cases[] = {
      {"<a k=\"1\" m=\"2\"/>", "m", "2", "2"},
      {"<ab k=\"1\"/><a k=\"2\"/>", "k", "1", "1"},
      {"<a kk=\"1\" k=\"2\">", "k", "1", "1"},
      {"<a k='1'>", "k", "", ""},
      {"<a k=1 m=\"2\">", "k", " m=", " m="},
      {"<a k = \"1\">", "k", "", ""},
      {"<a k=>", "k", "", ""},
      {"<a k=\"1>2\">", "k", "", ""},
      {"<a Key=\"1\">", "Key", "", "1"},
      {"<a k=\"&amp;\">", "k", "&", "&amp;"},
      {"<a>", "", "", ""},
      {"<a x=\"1\">", "a", "", ""},
      {"<b k=\"1\"><a", "k", "", ""},
      {"<a k=\"", "k", "", ""},
      {"<a k=\">", "k", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(xmlAttribute(c.text, "a", c.name), c.value) << c.text;
    EXPECT_EQ(Raw::xmlAttribute(c.text, "a", c.name), c.raw) << c.text;
  }
  EXPECT_EQ(xmlAttribute("<my_tag k=\"1\"/>", "My Tag", "K"), "1");
  EXPECT_EQ(Raw::xmlAttribute("<>", "", ""), "");
  EXPECT_EQ(Raw::xmlAttribute("<a> k=\"1\">", "a>", "k"), "");
  EXPECT_EQ(Raw::xmlAttribute("k=\"1\"<k=\"2\">", "", "k"), "2");
}

TEST(Xml, DefinitionAndExtraction) {
  EXPECT_EQ(xmlDefine("abc", ""), "<abc />");
  EXPECT_EQ(xmlDefine("My Tag", "a<b"), "<my_tag>a&lt;b</my_tag>");
  EXPECT_EQ(xmlDefine("a", "\x01"), "<a></a>");
  EXPECT_EQ(xmlContent(xmlDefine("\xC9t\xC9", "v"), "\xC9t\xC9", false), "v");
  struct {
    const char* text;
    bool whole;
    const char *result, *rest;
  } const cases[] = {
      {"<a>1</a><b>2</b>", false, "1", "<b>2</b>"},
      {"<x/><a k=\"1\"/><b/>", true, "<a k=\"1\"/>", "<x/><b/>"},
      {"<x/><a k=\"1\"/><b/>", false, "", "<x/><b/>"},
      {"-<a />-", false, "", "--"},
      {"<a></a>", false, "", "<a></a>"},
      {"<a></a>", true, "<a></a>", ""},
      {"<a>1<a>2</a>3</a>z", false, "1<a>2</a>3", "z"},
      {"<a><b/></a>", false, "<b/>", ""},
      {"<a>&amp;</a>", false, "&", ""},
      {"</a><a>x</a>", true, "", "</a><a>x</a>"},
      {"x</a>", true, "", "x</a>"},
      {"<a b='</a>'>x</a>", true, "", "<a b='</a>'>x</a>"},
      {"<a><a>x</a>", true, "", "<a><a>x</a>"},
  };
  for (const auto& c : cases) {
    std::string text = c.text;
    EXPECT_EQ(xmlExtract(text, "a", c.whole), c.result) << c.text;
    EXPECT_EQ(text, c.rest) << c.text;
  }
  std::string text = "<>x</>";
  EXPECT_EQ(xmlExtract(text, "", true), "");
  EXPECT_EQ(text, "<>x</>");
}

TEST(Xml, Files) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("f");
  using namespace std::string_literals;
  const std::pair<std::string, int> cases[] = {
      {"<?xml version=\"1.0\"?>", 1},
      {"<?xml", 1},
      {"<?xm", 0},
      {" \r\n\t\v\f<?xml-s", 1},
      {"\xEF\xBB\xBF<?xml", 0},
      {"", 0},
      {"<\0?\0x\0"s, 0},
      {std::string(5000, ' ') + "<?xml", 1},
      {std::string(510, ' ') + "<?xml", 1},
      {"<?xm <?xml", 0},
  };
  for (const auto& [content, expected] : cases) {
    support::writeFile(path, content);
    EXPECT_EQ(isFileXml(path.c_str()), expected) << content;
  }
  EXPECT_EQ(isFileXml(folder.file("missing").c_str()), 0);
  EXPECT_EQ(isFileXml(folder.name().c_str()), 0);
}

}  // namespace
