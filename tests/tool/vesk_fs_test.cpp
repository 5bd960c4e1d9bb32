// The command-line host, run as a user runs it.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

class VeskFs : public testing::Test {
 protected:
  // Standard output of a run, then the exit status, then standard error.
  std::string run(const std::string& arguments) const {
    return support::outputOf(folder_.path(), std::string("{ " VESK_FS " ") + arguments +
                                                 " 2>err; echo \"[$?]\"; cat err; rm err; }");
  }
  // Whether a run fails as told: status 1, nothing on standard output, and one
  // line on standard error that tells `what`.
  void expectFailure(const std::string& arguments, const std::string& what) const {
    const std::string result = run(arguments);
    EXPECT_TRUE(result.starts_with("[1]\nvesk-fs: ")) << arguments << ": " << result;
    EXPECT_NE(result.find(what), std::string::npos) << arguments << ": " << result;
    EXPECT_EQ(std::count(result.begin(), result.end(), '\n'), 2) << result;
  }

  support::TemporaryFolder folder_;
};

TEST_F(VeskFs, PacksAndUnpacks) {
  support::writeFile(folder_.file("in/sub/a.txt"), "a");
  support::writeFile(folder_.file("in/b.txt"), "b");
  EXPECT_EQ(run("pack in a.zip"), "packed 2 files into a.zip\n[0]\n");
  EXPECT_EQ(run("list a.zip"), "b.txt\nsub\\a.txt\n[0]\n");
  EXPECT_EQ(run("unpack a.zip out/deep"), "unpacked 2 files into out/deep\n[0]\n");
  EXPECT_EQ(support::run(folder_.path(), "diff -r in out/deep"), 0);
  EXPECT_EQ(run("tree in '*.TXT'"), "in\\b.txt\nin\\sub\\a.txt\n[0]\n");

  // As a shell completes the names of folders.
  EXPECT_EQ(run("pack in/ b.zip"), "packed 2 files into b.zip\n[0]\n");
  EXPECT_EQ(run("unpack b.zip other//place/"), "unpacked 2 files into other//place/\n[0]\n");
  EXPECT_EQ(support::run(folder_.path(), "diff -r in other/place"), 0);
  EXPECT_EQ(run("tree in/"), "in\\b.txt\nin\\sub\\a.txt\n[0]\n");
}

TEST_F(VeskFs, ChangesSingleEntries) {
  support::writeFile(folder_.file("one"), "1");
  support::writeFile(folder_.file("in/two"), "2");
  EXPECT_EQ(run("add a.zip one --password secret"), "[0]\n");
  EXPECT_EQ(run("add a.zip in/two"), "[0]\n");
  EXPECT_EQ(run("add a.zip one named/it"), "[0]\n");
  EXPECT_EQ(run("list a.zip"), "one\ntwo\nnamed/it\n[0]\n");
  EXPECT_EQ(support::run(folder_.path(), "unzip -P secret -tqq a.zip"), 0);
  EXPECT_EQ(run("remove a.zip named/it"), "[0]\n");
  EXPECT_EQ(run("extract a.zip one out/x --password secret"), "[0]\n");
  EXPECT_EQ(support::readFile(folder_.file("out/x")), "1");
  expectFailure("extract a.zip one y --password wrong", "password");
  expectFailure("extract a.zip one y", "password");
  EXPECT_FALSE(support::exists(folder_.file("y")));
  expectFailure("extract a.zip three y", "'three'");
  expectFailure("remove a.zip three", "'three'");
  EXPECT_EQ(run("remove a.zip one"), "[0]\n");
  expectFailure("remove a.zip two", "only entry");
}

TEST_F(VeskFs, SaysWhatIsWrong) {
  support::writeFile(folder_.file("text.zip"), "no archive");
  support::writeFile(folder_.file("in/file"), "x");
  support::writeFile(folder_.file("out/file"), "old");
  support::makeReadOnly(folder_.file("out/file"));
  run("pack in a.zip");
  expectFailure("pack none b.zip", "'none'");
  expectFailure("pack in none/b.zip", "'none/b.zip'");
  expectFailure("unpack none.zip x", "'none.zip'");
  expectFailure("unpack text.zip x", "not a sound zip archive");
  expectFailure("list text.zip", "not a sound zip archive");
  expectFailure("list in", "is a folder");
  expectFailure("unpack a.zip out", "cannot be replaced");
  EXPECT_EQ(support::readFile(folder_.file("out/file")), "old");
  expectFailure("add text.zip in/file", "not a sound zip archive");
  expectFailure("add a.zip none", "'none'");
  expectFailure("tree none", "'none'");
  EXPECT_EQ(support::readFile(folder_.file("text.zip")), "no archive");
  expectFailure("", "subcommand");
  expectFailure("nonsense", "subcommand");
  expectFailure("pack in", "ZIP");
  EXPECT_NE(run("--help").find("unpack"), std::string::npos);
}

TEST_F(VeskFs, CopiesSweepsAndReads) {
  support::writeFile(folder_.file("in/sub/a"), "a");
  support::writeFile(folder_.file("in/b.tmp"), "b");
  EXPECT_EQ(run("copy in/ out/new/"), "copied 2 files\n[0]\n");
  EXPECT_EQ(support::run(folder_.path(), "diff -r in out/new"), 0);
  EXPECT_EQ(run("copy in/b.tmp single/place"), "[0]\n");
  EXPECT_EQ(support::readFile(folder_.file("single/place/b.tmp")), "b");
  expectFailure("copy none out", "'none'");
  expectFailure("copy in in/b.tmp/x", "'.\\in/b.tmp/x\\'");

  ASSERT_EQ(support::run(folder_.path(), "touch -d '3 days ago' in/sub/a in/b.tmp"), 0);
  EXPECT_EQ(run("sweep in 4 --dry-run"), "[0]\n");
  EXPECT_EQ(run("sweep in 2 --dry-run"), "in\\b.tmp\nin\\sub\\a\n[0]\n");
  EXPECT_EQ(support::run(folder_.path(), "test -f in/sub/a"), 0);
  EXPECT_EQ(run("sweep in 2"), "deleted 2 files\n[0]\n");
  EXPECT_EQ(support::run(folder_.path(), "test -e in/sub"), 1);
  expectFailure("sweep none 2", "'none'");
  expectFailure("sweep out -1", "--help");

  EXPECT_EQ(run("version " VESK_TEST_DATA "/version/special3.dll"), "2.5.1C\n[0]\n");
  support::writeFile(folder_.file("f.xml"), "<a k=\"&lt;1\">x &amp; y</a>");
  expectFailure("version f.xml", "version resource");
  EXPECT_EQ(run("xml get f.xml a"), "x & y\n[0]\n");
  EXPECT_EQ(run("xml get f.xml a k"), "<1\n[0]\n");
  expectFailure("xml get f.xml b", "'b'");
  expectFailure("xml get none a", "'none'");
}

TEST_F(VeskFs, RefusesNamesThatLeadOut) {
  ASSERT_EQ(support::run(folder_.path(),
                         "python3 -c 'import zipfile; z = zipfile.ZipFile(\"a.zip\", \"w\");"
                         " z.writestr(\"../../x\", \"x\"); z.close()'"),
            0);
  expectFailure("unpack a.zip in/deep", "'../../x'");
  EXPECT_EQ(support::outputOf(folder_.path(), "find . -type f"), "./a.zip\n");
}

}  // namespace
