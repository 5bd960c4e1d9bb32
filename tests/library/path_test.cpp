#include <filesystem/path.h>

#include "support/temporary_folder.h"

namespace {

using namespace FileSystem;

TEST(Path, Decomposition) {
  struct {
    const char *path, *drive, *folder, *filename, *name, *extension;
  } const cases[] = {
      {"C:", "C:", "C:", "", "", ""},
      {"C:\\dir\\sub\\", "C:", "C:\\dir\\sub\\", "", "", ""},
      {"C:\\dir\\a.b.c", "C:", "C:\\dir\\", "a.b.c", "a.b", ".c"},
      {"\\\\srv\\share\\a.txt", "", "\\\\srv\\share\\", "a.txt", "a", ".txt"},
      {"a.b\\c", "", "a.b\\", "c", "c", ""},
      {".hidden", "", "", ".hidden", "", ".hidden"},
      {"name.", "", "", "name.", "name", "."},
      {"..", "", "", "..", ".", "."},
      {"  a .b  ", "", "", "  a .b", "a", ".b"},
      {"a.b\t", "", "", "a.b\t", "a", ".b\t"},
      {"\ta\t.b\r\n", "", "", "\ta\t.b\r\n", "\ta\t", ".b\r\n"},
      {"\t\r\nd\\ x", "", "d\\", " x", "x", ""},
      {"\t:\\x", ":", ":\\", "x", "x", ""},
      {"1:x", "1:", "1:", "x", "x", ""},
      {"CC:x", "", "", "CC:x", "CC:x", ""},
      {":", "", "", ":", ":", ""},
      {"/x.y", "", "/", "x.y", "x", ".y"},
      {"d\xE9\\a.b", "", "d\xE9\\", "a.b", "a", ".b"},
      {"d.\xE9/n.\xE9", "", "d.\xE9/", "n.\xE9", "n", ".\xE9"},
      {"\xE9.b.c", "", "", "\xE9.b.c", "\xE9.b", ".c"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(extractDrive(c.path), c.drive) << c.path;
    EXPECT_EQ(extractPath(c.path), c.folder) << c.path;
    EXPECT_EQ(extractFilename(c.path), c.filename) << c.path;
    EXPECT_EQ(extractName(c.path), c.name) << c.path;
    EXPECT_EQ(extractExtension(c.path), c.extension) << c.path;
  }
}

TEST(Path, ReplacedExtension) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"C:\\dir\\a.txt", ".doc", "C:\\dir\\a.doc"},
      {"C:\\dir\\a.txt", "", "C:\\dir\\a"},
      {"C:\\", "txt", "C:\\.txt"},
      {"a", "%s ", "a.%s"},
      {" a.b", "c", "a.c"},
      {"\ta.b", "c\t", "\ta.c\t"},
      {"d.e/a", "c", "d.e/a.c"},
  };
  for (const auto& [path, extension, result] : cases) {
    EXPECT_EQ(replaceExtension(path, extension), result) << path;
  }
}

TEST(Path, LongPartsAreCut) {
  const std::string part(300, 'x');
  EXPECT_EQ(extractName(part), part.substr(0, 255));
  EXPECT_EQ(extractFilename(part + ".txt "), part.substr(0, 255) + ".txt");
  EXPECT_EQ(extractPath(part + "\\").size(), 255U);
  EXPECT_EQ(extractPath(part.substr(0, 250) + " \r\n\t \\"), part.substr(0, 250));
  EXPECT_EQ(replaceExtension("C:" + part + "\\", "").back(), '\\');
  EXPECT_EQ(extractExtension("." + part).size(), 255U);
  EXPECT_EQ(replaceExtension("C:\\" + part + "\\" + part, part).size(), 260U);
  CString root;
  PathRoot(part.c_str(), root);
  EXPECT_EQ(root.GetString(), part.substr(0, 259));
  EXPECT_EQ(ParentDirectory(part.c_str()).GetString(), part.substr(0, 259) + "\\");
}

TEST(Path, EqualityAndSubPath) {
  EXPECT_TRUE(pathEqual("", ""));
  EXPECT_TRUE(pathEqual("C:\\Data\\A.TXT", "c:\\data\\a.txt"));
  EXPECT_FALSE(pathEqual("C:\\a", "C:\\a\\"));
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"C:\\Data\\", "c:\\data\\sub\\F.txt", "sub\\F.txt"},
      {"C:\\Data", "C:\\Data\\x", "\\x"},
      {"C:\\ab", "C:\\abc\\d", "c\\d"},
      {"C:\\a", "C:\\a", "C:\\a"},
      {"C:\\longer", "C:\\", "C:\\"},
      {"a", "C:\\a\\b", "C:\\a\\b"},
  };
  for (const auto& [base, path, result] : cases) EXPECT_EQ(subPath(base, path), result) << path;
}

TEST(Path, RootAndParent) {
  struct {
    const char *path, *root, *parent;
  } const cases[] = {
      {nullptr, "", ""},
      {"no-such-name", "no-such-name", "no-such-name\\"},
      {"C:", "C:", "C:\\"},
      {"C:\\", "C:\\", "C:\\"},
      {"C:\\a\\b\\", "C:\\", "C:\\a\\"},
      {"C:\\a/b", "C:\\", "C:\\"},
      {"C:/a/b/", "C:/", "C:/a/b/\\"},
      {"\\a\\b", "\\", "\\a\\"},
      {"a\\b", "a\\", "a\\"},
      {"\\\\srv\\share\\a\\b", "\\\\srv\\share\\", "\\\\srv\\share\\a\\"},
      {"\\\\srv\\share", "\\\\srv\\share", "\\\\srv\\"},
      {"\\\\srv\\", "\\\\srv\\", "\\\\"},
      {"\\/srv\\share/a", "\\/srv\\share/", "\\/srv\\"},
      {"/\\srv/share\\a", "/\\srv/share\\", "/\\srv/share\\"},
      {"C:\\a\\\\b\\c\\d", "C:\\a\\\\b\\c\\", "C:\\a\\\\b\\c\\"},
      {"C:\\a\\\\", "C:\\a\\\\", "C:\\a\\"},
      {"\\\\\\a\\b", "\\\\\\a\\", "\\\\\\a\\"},
  };
  for (const auto& c : cases) {
    CString root("before");
    PathRoot(c.path, root);
    EXPECT_STREQ(root, c.root) << (c.path ? c.path : "null");
    EXPECT_STREQ(ParentDirectory(c.path), c.parent) << (c.path ? c.path : "null");
  }

  // Whether there is such a file matters where the text alone does not decide.
  const support::TemporaryFolder folder;
  support::writeFile(folder.file("f.txt"), "");
  std::string base = folder.path().generic_string();
  if (base[1] != ':') base = "C:" + base;
  for (const char* const file : {"/f.txt", "/f.txt\\"}) {
    EXPECT_EQ(ParentDirectory((base + file).c_str()).GetString(), base + "/\\") << file;
  }
  EXPECT_STREQ(ParentDirectory(support::kPlatform.program), "");
}

TEST(Path, InvalidCharacters) {
  EXPECT_EQ(eraseInvalidCharacter("\\a/b:c?d\"e<f>g|||h*\t. "), "abcdefgh*\t. ");
}

}  // namespace
