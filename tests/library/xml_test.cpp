#include <filesystem/filesystem.h>

#include <random>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;
using namespace FileSystem::Xml;

// Replaces the entities kind by kind, as fromXml is defined. Searches from the beginning after each
// replacement.
std::string fromXmlByPasses(std::string text) {
  const std::pair<std::string, char> entities[] = {
      {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&quot;", '"'}};
  for (const auto& [entity, character] : entities) {
    for (std::size_t at; (at = text.find(entity)) != std::string::npos;) {
      text.replace(at, entity.size(), 1, character);
    }
  }
  return text;
}

TEST(Xml, Escaping) {
  EXPECT_EQ(toXml("<a k=\"1\">'&'"), "&lt;a k=&quot;1&quot;&gt;&apos;&amp;&apos;");
  std::string controls, others;
  for (int c = 0; c < 256; ++c) (c < ' ' ? controls : others) += static_cast<char>(c);
  EXPECT_EQ(toXml(controls), std::string("\0\t\n\r", 4));
  EXPECT_EQ(fromXml(toXml(others)), others);
}

TEST(Xml, EscapingOfLongTexts) {
  // Every byte at every position in a block and after the last block.
  for (std::size_t at = 0; at < 300; ++at) {
    const std::string before(at, 'x');
    const std::string after(299 - at, 'x');
    for (int c = 0; c < 256; ++c) {
      const std::string byte(1, static_cast<char>(c));
      ASSERT_EQ(toXml(before + byte + after), before + toXml(byte) + after) << c << " at " << at;
    }
  }
  // All densities of replacements, since the size of the result is estimated.
  std::minstd_rand random(3);
  constexpr std::size_t kSizes[] = {127, 128, 129, 5000, 100000};
  for (unsigned percent = 0; percent <= 100; percent += 5) {
    for (const std::size_t size : kSizes) {
      std::string text, escaped;
      while (text.size() < size) {
        text += random() % 100 < percent ? "<>&'\"\x01\n"[random() % 7] : 'x';
        escaped += toXml({text.back()});
      }
      ASSERT_EQ(toXml(text), escaped) << percent << " % of " << size;
    }
  }
  // Memory is reserved for what a text needs, and once: a new copy for each piece takes minutes.
  constexpr std::size_t kLarge = 3000000;
  for (const char end : {'x', '<', '&', '\''}) {
    const std::string escaped = toXml(std::string(kLarge / 2, 'x') + std::string(kLarge, end));
    EXPECT_LT(escaped.capacity(), escaped.size() + escaped.size() / 7) << end;
  }
}

TEST(Xml, Unescaping) {
  EXPECT_EQ(fromXml("&lt;&gt;&amp;&apos;&quot; &amp;lt; &amp;amp;quot;"), "<>&'\" &lt; \"");
  EXPECT_EQ(fromXml("&#60;&LT;&nbsp;& &lt"), "&#60;&LT;&nbsp;& &lt");

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
  const std::string replaced =
      "\xE0\xE2\xE4\xE7\xE8\xE9\xEA\xEB\xF2\xF4\xF6\xF9\xFB\xFC !\"$%&'*+/<>?\\@";
  EXPECT_EQ(toXmlTag(replaced), "aaaceeeeooouuu_______________at_");
  const std::string capitals = "\xC0\xC2\xC7\xC8\xC9\xCA\xCB\xCE\xCF\xD4\xD6\xD9\xDB";
  const auto lower = [&](char c) {
    const bool isCapital = (c >= 'A' && c <= 'Z') || capitals.find(c) != std::string::npos;
    return std::string(1, static_cast<char>(isCapital ? c + 0x20 : c));
  };
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    EXPECT_TRUE(toXmlTag({c}) == lower(c) || replaced.find(c) != std::string::npos) << byte;
    for (int other = 0; other < 256; ++other) {
      const char o = static_cast<char>(other);
      EXPECT_EQ(pathEqual({c}, {o}), lower(c) == lower(o)) << byte << ' ' << other;
    }
  }
}

TEST(Xml, Content) {
  struct {
    const char *text, *tag, *content, *whole, *raw;
  } const cases[] = {
      {"<a k=\"1\">x</a>", "a", "x", "<a k=\"1\">x</a>", "x"},
      {"-<a>1<a>2</a>3</a>z", "a", "1<a>2</a>3", "<a>1<a>2</a>3</a>", "1<a>2"},
      {"<a>1</a><a>2</a>", "a", "1", "<a>1</a>", "1"},
      {"<a></a>", "a", "", "", ""},
      {"<a/>", "a", "", "", ""},
      {"</a><a>x</a>", "a", "", "", ""},
      {"x</a>", "a", "", "", ""},
      {"<ab>x</ab><a>y</a>", "a", "", "", "x</ab><a>y"},
      {"<Name>x</Name>", "Name", "", "", "x"},
      {"<a>&lt;</a>", "a", "<", "<a>&lt;</a>", "&lt;"},
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
      {"<a k=\"1\">", "k=\"1\">", "", ""},
      {"<a Key=\"1\">", "Key", "", "1"},
      {"<a k=\"&amp;\">", "k", "&", "&amp;"},
      {"<a>", "", "", ""},
      {"<a x=\"1\">", "a", "", ""},
      {"<a k=\"1\"", "k", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(xmlAttribute(c.text, "a", c.name), c.value) << c.text;
    EXPECT_EQ(Raw::xmlAttribute(c.text, "a", c.name), c.raw) << c.text;
  }
  EXPECT_EQ(xmlAttribute("<my_tag k=\"1\"/>", "My Tag", "K"), "1");
  EXPECT_EQ(Raw::xmlAttribute("<Tag k=\"1\"/>", "Tag", "k"), "1");
  EXPECT_EQ(Raw::xmlAttribute("<>", "", ""), "");
  EXPECT_EQ(Raw::xmlAttribute("<a> k=\"1\">", "a>", "k"), "");
  EXPECT_EQ(Raw::xmlAttribute("k=\"1\"<k=\"2\">" + std::string(100, ' '), "", "k"), "2");
}

TEST(Xml, DefinitionAndExtraction) {
  EXPECT_EQ(xmlDefine("abc", ""), "<abc />");
  EXPECT_EQ(xmlDefine("My Tag", "a<b"), "<my_tag>a&lt;b</my_tag>");
  EXPECT_EQ(xmlDefine("a", "\x01"), "<a></a>");
  struct {
    const char *text, *tag;
    bool whole;
    const char *result, *rest;
  } const cases[] = {
      {"<a>1</a><b>2</b>", "a", false, "1", "<b>2</b>"},
      {"<x/><a k=\"1\"/><b/>", "a", true, "<a k=\"1\"/>", "<x/><b/>"},
      {"<x/><a k=\"1\"/><b/>", "a", false, "", "<x/><b/>"},
      {"-<a />-", "a", false, "", "--"},
      {"<a></a>", "a", false, "", "<a></a>"},
      {"x<a></a>yz", "a", true, "<a></a>", "xyz"},
      {"<a>1<a>2</a>3</a>z", "a", false, "1<a>2</a>3", "z"},
      {"<a><b/></a>", "a", false, "<b/>", ""},
      {"<a>&amp;</a>", "a", false, "&", ""},
      {"x</a>", "a", true, "", "x</a>"},
      {"<a b='</a>'>x</a>", "a", true, "", "<a b='</a>'>x</a>"},
      {"<a><a>x</a>", "a", true, "", "<a><a>x</a>"},
      {"<>x</>", "", true, "", "<>x</>"},
  };
  for (const auto& c : cases) {
    std::string text = c.text;
    EXPECT_EQ(xmlExtract(text, c.tag, c.whole), c.result) << c.text;
    EXPECT_EQ(text, c.rest) << c.text;
  }
}

TEST(Xml, ElementsOneAfterTheOther) {
  using Elements = std::vector<std::pair<std::string, std::string>>;  // whole, and their contents
  const std::tuple<std::string, const char*, Elements> cases[] = {
      {"<a>1</a>-<a k=\"2\">&lt;</a>", "a", {{"<a>1</a>", "1"}, {"<a k=\"2\">&lt;</a>", "<"}}},
      {"<users><user>x</user></users>", "User", {{"<user>x</user>", "x"}}},
      {"<a/><a\n/><a></a>", "a", {{"<a/>", ""}, {"<a\n/>", ""}, {"<a></a>", ""}}},
      {"<a>1<a>2<a/></a>3</a><a>4</a>",
       "a",
       {{"<a>1<a>2<a/></a>3</a>", "1<a>2<a/></a>3"}, {"<a>4</a>", "4"}}},
      {"<a><ab>1</ab></a>", "a", {{"<a><ab>1</ab></a>", "<ab>1</ab>"}}},
      {"</a><a>1</a>", "a", {{"<a>1</a>", "1"}}},
      {"<a>1</a><a><a>2</a>", "a", {{"<a>1</a>", "1"}}},
      {"<a>1</a><a", "a", {{"<a>1</a>", "1"}}},
      {"<a>1<a </a></a>", "a", {{"<a>1<a </a></a>", "1<a </a>"}}},
      {"", "a", {}},
  };
  for (const auto& [text, tag, expected] : cases) {
    ElementCursor cursor(text, tag);
    EXPECT_EQ(cursor.element(), "");
    Elements found;
    while (cursor.next()) found.emplace_back(cursor.element(), cursor.content());
    EXPECT_EQ(found, expected) << text;
    EXPECT_FALSE(cursor.next());
    EXPECT_EQ(cursor.element(), "");
  }
}

TEST(Xml, Files) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("f");
  using namespace std::string_literals;
  const std::pair<std::string, int> cases[] = {
      {"<?xml", 1},
      {"<?xm", 0},
      {" \r\n\t\v\f<?xml-s", 1},
      {"\xEF\xBB\xBF<?xml", 0},
      {"<\0?\0x\0"s, 0},
      {std::string(510, ' ') + "<?xml", 1},
      {"<?xm <?xml", 0},
  };
  for (const auto& [content, expected] : cases) {
    support::writeFile(path, content);
    EXPECT_EQ(isFileXml(path.c_str()), expected) << content;
  }
  EXPECT_EQ(isFileXml(folder.file("missing").c_str()), 0);
}

}  // namespace
