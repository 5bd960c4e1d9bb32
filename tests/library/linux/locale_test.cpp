// Functions that depend on the global locale, which the program and the library
// share on this platform.

#include <filesystem/filesystem.h>

#include <algorithm>
#include <locale>

#include "support/folder_test.h"

namespace {

// Here one more character is a space, and `#` is the capital of `+`, as all accented letters are.
class Characters : public std::ctype<char> {
 public:
  explicit Characters(char space) : std::ctype<char>(tableWith(space), true) {}

 protected:
  char do_tolower(char c) const override {
    return c == '#' || static_cast<signed char>(c) < 0 ? '+' : std::ctype<char>::do_tolower(c);
  }

 private:
  static const mask* tableWith(char space) {
    mask* const table = new mask[table_size];
    std::copy_n(classic_table(), table_size, table);
    table[static_cast<unsigned char>(space)] = std::ctype_base::space;
    return table;
  }
};

class Thousands : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

class Locale : public support::FolderTest {
 protected:
  ~Locale() override { std::locale::global(before_); }

  // Adds to the global locale.
  template <typename Facet>
  static void install(Facet* facet) {
    std::locale::global(std::locale(std::locale(), facet));
  }

  const std::locale before_;
  const std::string path_ = folder_.file("f");
};

TEST_F(Locale, DecidesLettersAndSpaces) {
  support::writeFile(path_, "--<?xml");
  install(new Characters('-'));
  EXPECT_EQ(FileSystem::isFileXml(path_.c_str()), 1);
  EXPECT_EQ(FileSystem::Xml::toXmlTag("A#\xE1\xC2"), "a++\xE2");
  EXPECT_TRUE(FileSystem::pathEqual("A#", "a+"));
  EXPECT_FALSE(FileSystem::pathEqual("\xE2", "+"));
  install(new Characters('x'));
  support::writeFile(path_, "<?xml");
  EXPECT_EQ(FileSystem::isFileXml(path_.c_str()), 0);
}

TEST_F(Locale, DoesNotGroupDigits) {
  install(new Thousands);
  FileSystem::FileStream stream(path_.c_str(), FileSystem::FileStream::OpenWrite);
  stream << -1234567L;
  stream.close();
  EXPECT_EQ(support::readFile(path_), "-1234567");
}

}  // namespace
