// Texts with a zero byte in them, such as a whole buffer: paths and names end there, other texts do
// not.

#include <filesystem/filesystem.h>

#include <functional>
#include <set>
#include <vector>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;
using namespace std::string_literals;

using Strings = std::vector<std::string>;

// Returns a text as it is passed to an export.
using Pass = std::string (*)(const std::string&);

std::string plain(const std::string& text) { return text; }
std::string withRest(const std::string& text) { return text + "\0:\\in\\rest"s; }
std::string asBuffer(const std::string& text) { return text + std::string(260, '\0'); }

// The files of each export's trial, and what they became.
class World {
 public:
  World() {
    support::writeFile(folder_.file("in/a.txt"), "a");
    support::writeFile(folder_.file("in/sub/b.txt"), "b");
    support::writeFile(folder_.file("in/sub/deep/c.txt"), "c");
    support::writeFile(folder_.file("in/top.tmp"), "top");
    support::setWriteTime(folder_.file("in/sub/b.txt"), 1000000000);
    support::setWriteTime(folder_.file("in/top.tmp"), 1000000000);
    ZipArchive archive;
    EXPECT_EQ(archive.create(folder_.file("a.zip").c_str(), 0), 1);
    EXPECT_EQ(archive.insert({'x', 'y'}, "entry", "note", 0), 1);
  }

  std::string path(const std::string& name) const { return folder_.text() + name; }
  ZipArchive archive() const {
    ZipArchive archive;
    EXPECT_EQ(archive.open(path("a.zip").c_str(), kAccessReadWrite), 1);
    return archive;
  }
  // Replaces the folder's own name in a result.
  std::string anonymous(std::string text) const {
    const std::string own = folder_.name();
    for (std::size_t at; (at = text.find(own)) != std::string::npos;)
      text.replace(at, own.size(), "~");
    return text;
  }
  // Lists all files with their content, and the entries of the archive. The name of a temporary
  // storage is another one each time.
  std::string state() const {
    std::set<std::string> lines;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
      std::string name = support::textOf(entry.path().lexically_relative(folder_.path()));
      const std::size_t brace = name.find('{');
      if (brace != std::string::npos)
        name = name.substr(0, brace) + "{storage}" + name.substr(brace + 38);
      const bool isText = entry.is_regular_file() && entry.path().extension() != ".zip";
      lines.insert(name + ' ' + (isText ? support::readFile(support::textOf(entry.path())) : ""));
    }
    std::vector<std::pair<std::string, std::string>> entries;
    archive().content(entries);
    for (const auto& [name, comment] : entries) lines.insert(name + '/' + comment);
    std::string all;
    for (const std::string& line : lines) all += line + '\n';
    return all;
  }

 private:
  support::TemporaryFolder folder_;
};

using In = const World&;

// Returns a call that applies a change after `add` has filled it.
auto applies(void (*add)(ArchiveChange& change, In world, Pass pass)) {
  return [add](In world, Pass pass) {
    ArchiveChange change;
    add(change, world, pass);
    return std::string(reasonText(change.apply(world.path("a.zip").c_str()).reason));
  };
}

std::string textOf(const std::string& text) { return text; }
template <typename Number>
std::string textOf(Number number) {
  return std::to_string(number);
}

// An export, which `call` calls with texts that `pass` has changed.
struct Export {
  template <typename Call>
  Export(const char* name, Call call)
      : name(name), result([call](In world, Pass pass) { return textOf(call(world, pass)); }) {}

  const char* name;
  std::function<std::string(In world, Pass pass)> result;
};

const Export kExports[] = {
    {"extractPath", [](In, Pass pass) { return extractPath(pass("C:\\d\\")); }},
    {"extractFilename", [](In, Pass pass) { return extractFilename(pass("C:\\d\\a.b")); }},
    {"replaceExtensionExtension",
     [](In, Pass pass) { return replaceExtension("C:\\d\\a.b", pass("c")); }},
    {"fileTime", [](In world, Pass pass) { return fileTime(pass(world.path("in\\sub\\b.txt"))); }},
    {"readContent", [](In world, Pass pass) { return readContent(pass(world.path("in\\a.txt"))); }},
    {"writeContent",
     [](In world, Pass pass) { return writeContent(pass(world.path("in\\new")), "new"); }},
    {"CopyContentSource",
     [](In world, Pass pass) {
       return CopyContent(pass(world.path("in\\")), world.path("out\\"));
     }},
    {"CopyContentTarget",
     [](In world, Pass pass) {
       return CopyContent(world.path("in\\"), pass(world.path("out\\")));
     }},
    {"eraseOldFile", [](In world, Pass pass) { return eraseOldFile(pass(world.path("in\\")), 7); }},
    {"TemporaryStorageCreate",
     [](In world, Pass pass) {
       TemporaryStorage storage;
       std::string result = textOf(storage.create(pass(world.path("in")), false));
       result += storage.basePath();
       result += textOf(writeContent(storage.path() + "page", "page"));
       return result + '\n' + world.state();  // before the storage is cleared
     }},
    {"ZipArchiveExtractList",
     [](In world, Pass pass) {
       return world.archive().extract(Strings{pass("entry")}, world.path("out\\").c_str());
     }},
    {"ZipArchiveInsertName",
     [](In world, Pass pass) { return world.archive().insert({'n'}, pass("new"), "", 0); }},
    {"ZipArchiveInsertComment",
     [](In world, Pass pass) { return world.archive().insert({'n'}, "new", pass("comment"), 0); }},
    {"ArchiveChangeRemove",
     applies([](ArchiveChange& change, In, Pass pass) { change.remove(pass("entry")); })},
    {"ArchiveChangeInsertFilePath", applies([](ArchiveChange& change, In world, Pass pass) {
       change.insertFile(pass(world.path("in\\a.txt")), "a");
     })},
    {"ArchiveChangeInsertFolder", applies([](ArchiveChange& change, In world, Pass pass) {
       change.insertFolder(pass(world.path("in")), pass("new"));
     })},
    {"ArchiveChangeInsertLink", applies([](ArchiveChange& change, In world, Pass pass) {
       change.insertLink(pass(world.path("in\\a.txt")), pass("new"));
     })},
    {"ArchiveChangeInsertName", applies([](ArchiveChange& change, In, Pass pass) {
       change.insertBytes({'n'}, pass("new"), pass("comment"));
     })},
};

class ZeroByte : public testing::TestWithParam<Export> {
 protected:
  // Returns the result of the export and what it leaves on disk.
  static std::string outcome(Pass pass) {
    const World world;
    const std::string result = GetParam().result(world, pass);
    return world.anonymous(result + '\n' + world.state());
  }
};

TEST_P(ZeroByte, EndsPathsAndNames) {
  const std::string expected = outcome(plain);
  EXPECT_EQ(outcome(withRest), expected);
  EXPECT_EQ(outcome(asBuffer), expected);
}

INSTANTIATE_TEST_SUITE_P(Exports, ZeroByte, testing::ValuesIn(kExports),
                         [](const auto& row) { return std::string(row.param.name); });

// These take bytes: nothing ends at a zero byte.
TEST(ZeroBytes, AreContent) {
  EXPECT_FALSE(pathEqual("a", "a\0b"s));
  EXPECT_EQ(subPath("a\0"s, "a\0b"s), "b");
  EXPECT_EQ(eraseInvalidCharacter("a\0:b"s), "a\0b"s);
  EXPECT_EQ(Xml::toXml("a\0<"s), "a\0&lt;"s);
  EXPECT_EQ(Xml::toXmlTag("a\0B"s), "a\0b"s);
  const World world;
  EXPECT_TRUE(writeContent(world.path("bytes"), "a\0b"s));
  EXPECT_EQ(readContent(world.path("bytes")), "a\0b"s);
}

// A buffer that was never filled names no folder, and not the root.
TEST(ZeroBytes, EmptyBuffersNameNoFolder) {
  const std::string buffer(260, '\0');
  const World world;
  const std::string before = world.state();
  for (const std::string& folder : {buffer, ""s}) {
    EXPECT_EQ(findOldFiles(folder.c_str(), 7).reason, Reason::Missing);
    EXPECT_EQ(deleteTree(folder.c_str()).reason, Reason::Missing);
    EXPECT_EQ(copyTree(folder.c_str(), world.path("out").c_str()).reason, Reason::Missing);
    EXPECT_EQ(copyTree(world.path("in").c_str(), folder.c_str()).reason, Reason::Missing);
    EXPECT_FALSE(TemporaryStorage().create(folder, true));
    EXPECT_EQ(CopyContent(world.path("in\\"), folder), -4);
  }
  EXPECT_EQ(world.state(), before);
}

}  // namespace
