// Texts on the command line, which reach every command byte for byte.

#include <span>

#include "support/sanitized.h"
#include "tool/vesk_fs.h"

namespace {

// Texts to which a parser of command lines or a shell gives a meaning.
constexpr const char* kAllTexts[] = {"[x]", "--help", "[a,b]", "{}", "%%",
                                     "++",  "\"q\"",  "pack",  "--"};
constexpr std::span kTexts(kAllTexts, support::kSanitized ? 2 : std::size(kAllTexts));

class VeskFsArguments : public VeskFs {
 protected:
  // A command with `TEXT` where the text under test is, and its output with `TEXT` as well.
  using TextRow = std::pair<std::string, std::string>;

  static std::string replaced(std::string line, const std::string& text) {
    constexpr std::string_view kPlace = "TEXT";
    for (std::size_t at = 0; (at = line.find(kPlace, at)) != std::string::npos; at += text.size()) {
      line.replace(at, kPlace.size(), text);
    }
    return line;
  }

  // Runs the rows for one text. Each succeeds, with no more output than its own.
  void checkText(const std::string& text, const std::vector<TextRow>& rows) const {
    for (const auto& [line, shown] : rows) {
      const std::string arguments = replaced(line, '\'' + text + '\'');
      EXPECT_EQ(run(arguments), replaced(shown, text) + "[0]\n") << arguments;
    }
  }

  // Each row fails and has the text in its message.
  void checkNamed(const std::string& text, const std::vector<std::string>& rows) const {
    for (const std::string& row : rows) {
      const std::string arguments = replaced(row, '\'' + text + '\'');
      const std::string result = run(arguments);
      EXPECT_TRUE(result.starts_with("[1]\n")) << arguments << ": " << result;
      EXPECT_NE(result.find(text + '\''), std::string::npos) << arguments << ": " << result;
    }
  }
};

TEST_F(VeskFsArguments, NameEntriesUnchanged) {
  write("file", "x");
  for (const std::string text : kTexts) {
    shell("rm -f a.zip && zip -q a.zip file");
    checkNamed(text, {"list a.zip -- TEXT", "remove a.zip -- TEXT", "extract a.zip -- TEXT out"});
    checkText(text, {{"add a.zip file --name TEXT", ""},
                     {"printf y | add a.zip - --name=y=TEXT", ""},
                     {"list a.zip -- TEXT file", "file\nTEXT\n"},
                     {"list a.zip -l -- TEXT >table", ""},
                     {"extract a.zip -- TEXT -", "x"},
                     {"extract a.zip -- y=TEXT -", "y"},
                     {"remove a.zip -v -- TEXT", "removed TEXT\n"}});
  }
}

TEST_F(VeskFsArguments, NameFilesUnchanged) {
  write("plain", "x");
  for (const std::string text : kTexts) {
    if (!support::fileSystem().anyName && text.find('"') != text.npos) continue;
    checkNamed(text, {"add new.zip -- TEXT", "list -- TEXT", "test -- TEXT", "pack -- TEXT new.zip",
                      "unpack -- TEXT out", "copy -- TEXT out", "tree -- TEXT", "version -- TEXT",
                      "xml get -- TEXT a", "xml get plain -- TEXT", "xml get plain -- a TEXT",
                      "sweep --dry-run -- TEXT 1", "add new.zip plain --password-file TEXT"});
    write(text, "<a>1</a>\n");
    checkText(text, {{"add a.zip -- TEXT", ""},
                     {"list a.zip -- TEXT", "TEXT\n"},
                     {"xml get -- TEXT a", "1\n"},
                     {"copy -- TEXT copied", ""},
                     {"add b.zip --password-file TEXT plain", ""},
                     {"extract b.zip plain - --password-file TEXT", "x"},
                     {"add c.zip plain --password=TEXT -q", ""},
                     {"extract c.zip plain - --password TEXT -q", "x"},
                     {"pack copied -q --no-directories -- TEXT", ""},
                     {"list -- TEXT", "TEXT\n"},
                     {"test -q -- TEXT", ""},
                     {"extract -- TEXT TEXT extracted/", ""},
                     {"unpack -q -- TEXT unpacked", ""}});
    EXPECT_EQ(read("copied/" + text), "<a>1</a>\n") << text;
    shell("diff -r copied unpacked && diff -r copied extracted");
    shell("rm -r copied unpacked extracted *.zip ./" + ('\'' + text + '\''));
  }
}

// An empty text is mostly a variable without a value. Taken for an option that is not given, it
// would store files unencrypted; taken for a directory, it would be another one.
TEST_F(VeskFsArguments, AreNotEmpty) {
  write("in/file", "<a>x</a>");
  run("add a.zip in/file");
  for (const char* arguments :
       {"pack '' b.zip", "pack in ''", "unpack a.zip ''", "list ''", "test ''", "add b.zip ''",
        "add b.zip in/file --password ''", "add b.zip in/file --password=", "remove '' file",
        "extract a.zip file ''", "tree ''", "tree in ''", "copy '' out", "copy in/file ''",
        "sweep '' 1", "sweep in ''", "version ''", "xml get in/file ''", "xml get in/file a ''"}) {
    const std::string result = run(arguments);
    EXPECT_TRUE(result.starts_with("[2]\nvesk-fs: ")) << arguments << ": " << result;
    EXPECT_NE(result.find("empty"), std::string::npos) << arguments << ": " << result;
  }
  shell("test \"$(echo $(find . -type f | sort))\" = './a.zip ./in/file'");
}

TEST_F(VeskFsArguments, AreNumbersInDecimal) {
  write("in/sub/file", "x");
  shell("touch -d '9 days ago' in/sub/file");
  check({{"sweep in 010", 0, "deleted 0 files\n"},
         {"sweep in 0x1", 2, "", "'0x1' is no number"},
         {"sweep in 4294967296", 2, "", "is no number"},
         {"sweep in 1.5", 2, "", "is no number"},
         {"sweep in -- -1", 2, "", "is no number"}});
}

TEST_F(VeskFsArguments, AreUsedOnce) {
  write("file", "x");
  check({{"add a.zip file --name a --name b", 2, "", "--name occurs twice"},
         {"add a.zip file --password a --password-file b", 2, "", "--password"},
         {"add a.zip file --name", 2, "", "--name needs a value"},
         {"list a.zip --json=yes", 2, "", "--json takes no value"},
         {"list a.zip -lx", 2, "", "unknown option '-lx'"},
         {"xml", 2, "", "a command is required"},
         {"xml put", 2, "", "unknown command 'xml put'"},
         {"add a.zip file -qv --name -v", 0, "added -v\n"},
         {"list a.zip -ql -v >table", 0, ""}});
}

}  // namespace
