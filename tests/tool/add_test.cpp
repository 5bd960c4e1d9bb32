// What `add` and `remove` change, and what they refuse.

#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, ChangesNoOtherEntry) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
z.writestr("Makefile", "1")
z.writestr("makefile", "2")
z.close()
z = zipfile.ZipFile("one.zip", "w")
z.writestr("Makefile", "1")
z.close())");
  write("in/makefile", "new");
  write("other/makefile", "other");
  check({
      {"add a.zip in/makefile", 0, ""},
      {"extract a.zip Makefile -", 0, "1"},
      {"extract a.zip makefile -", 0, "new"},
      {"printf 3 | add a.zip - --name MAKEFILE", 0, ""},
      {"add a.zip in/makefile other/makefile", 1, "", "both would be the entry 'makefile'"},
      {"add new.zip in/makefile other/makefile", 1, "", "both would be the entry 'makefile'"},
      {"add new.zip in/makefile in/makefile ./in/makefile -v", 0, "added makefile\n"},
      {"list a.zip", 0, "Makefile\nmakefile\nMAKEFILE\n"},
      {"add one.zip in/makefile", 0, ""},
      {"list one.zip", 0, "Makefile\nmakefile\n"},
      {"remove a.zip makefile MAKEFILE", 0, ""},
      {"list a.zip", 0, "Makefile\n"},
  });
}

// Other programs write `/` between the components of a name, and some wrote `\\`.
TEST_F(VeskFs, AddReplacesBothSeparators) {
  python(R"(
import os
z = zipfile.ZipFile("a.zip", "w")
for name in "sub/f", "sub\\g", "sub/h", "sub\\h", "keep":
    info = zipfile.ZipInfo(name)
    info.filename = name
    z.writestr(info, "old")
z.close())");
  for (const char* name : {"f", "g", "h", "new"}) write(std::string("src/sub/") + name, "new");
  check({{"add a.zip src/sub", 0, ""}, {"pack src b.zip -q", 0, ""}, {"add b.zip src/sub", 0, ""}});
  python(R"(
for archive in "a.zip", "b.zip":
    z = zipfile.ZipFile(archive)
    names = [i.orig_filename for i in z.infolist() if not i.is_dir()]
    found = {name: z.read(name) for name in names if name != "keep"}
    expected = ["sub/f", "sub/g", "sub/h", "sub/new"]
    assert sorted(name for name in names if name != "keep") == expected
    assert set(found.values()) == {b"new"}, found
    assert archive == "b.zip" or z.read("keep") == b"old")");
}

TEST_F(VeskFs, PackedTreesUnpackEverywhere) {
  for (const char* name :
       {"a", "sub/b", "sub/deep/c", "d\u00e9/\u00fc \u20ac.txt", "\u65e5\u672c/x"}) {
    write(std::string("in/") + name, name);
  }
  check({{"pack in a.zip -q", 0, ""}, {"add b.zip in", 0, ""}, {"unpack a.zip out/own -q", 0, ""}});
  for (const char* program :
       {"mkdir -p out/unzip && unzip -q a.zip -d out/unzip && unzip -q b.zip -d out/added",
        "7z x -oout/7z a.zip", "mkdir -p out/bsdtar && bsdtar -xf a.zip -C out/bsdtar",
        "python3 -m zipfile -e a.zip out/python"}) {
    EXPECT_EQ(shell(std::string("export LC_ALL=C.UTF-8 && ") + program), 0) << program;
  }
  for (const char* place : {"own", "unzip", "added/in", "7z", "bsdtar", "python"}) {
    EXPECT_EQ(shell(std::string("diff -r in out/") + place), 0) << place;
  }
}

TEST_F(VeskFs, AddNamesFilesByTheirDirectory) {
  write("in/a", "a");
  write("in/deep/b", "b");
  write("in/..c/d", "d");
  ASSERT_EQ(
      shell("cd in/deep && " VESK_FS " add ../../up.zip .. && " VESK_FS " add ../../dot.zip ."), 0);
  check({{"list up.zip", 0, "..c\\\ndeep\\\n..c\\d\na\ndeep\\b\n"},
         {"list dot.zip", 0, "b\n"},
         {"add a.zip in/deep/../deep/ -v", 0, "added deep\\\nadded deep\\b\n"},
         {"add a.zip in/..c -v", 0, "added ..c\\\nadded ..c\\d\n"},
         {"add a.zip in/a --name sub/", 2, "", "--name 'sub/' would be a directory"}});
}

// In the directory that is packed or added, too.
TEST_F(VeskFs, TheArchiveIsNotAddedToItself) {
  write("in/a", "a");
  check({{"pack in in/a.zip", 0, "packed 1 file into in/a.zip\n"},
         {"pack in in/a.zip", 0, "packed 1 file into in/a.zip\n"},
         {"add in/a.zip in -v", 0, "added in\\\nadded in\\a\n"},
         {"add in/b.zip in/a.zip", 0, ""},
         {"add in/b.zip in -v", 0, "added in\\\nadded in\\a\nadded in\\a.zip\n"},
         {"add in/b.zip in/b.zip in/a -v", 0, "added a\n",
          "left out 'in/b.zip': it is the archive itself"},
         {"list in/a.zip", 0, ".\\\na\nin\\\nin\\a\n"},
         {"list in/b.zip", 0, "a.zip\nin\\\nin\\a\nin\\a.zip\na\n"},
         {"unpack in/a.zip in", 0, "unpacked 2 files into in\n"}});
}

TEST_F(VeskFs, KeepsTheLastOfEqualNames) {
  python(R"(
import warnings
warnings.simplefilter("ignore")
z = zipfile.ZipFile("a.zip", "w")
for name, text in ("a", "1"), ("b", "b"), ("a", "2"), ("c", "c"):
    z.writestr(name, text)
z.close())");
  ASSERT_EQ(shell("cp a.zip added.zip"), 0);
  write("a", "new");
  check({{"list a.zip", 0, "a\nb\na\nc\n"},
         {"test a.zip", 0, "tested 4 entries of a.zip: no errors\n"},
         {"extract a.zip a -", 0, "2"},
         {"extract a.zip 'a*' -", 0, "2"},
         {"unpack a.zip out", 1, "unpacked 3 files into out\n", "the entry 'a' occurs again"},
         {"add added.zip a", 0, ""},
         {"list added.zip", 0, "b\nc\na\n"},
         {"extract added.zip a -", 0, "new"},
         {"remove a.zip a -v", 0, "removed a\nremoved a\n"},
         {"list a.zip", 0, "b\nc\n"}});
  EXPECT_EQ(read("out/a"), "2");
}

// Two entries for one file, as names in other letter case are in some directories.
TEST_F(VeskFs, UnpackWritesNoFileTwice) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
for name, text in ("sub/f", "first"), ("g", "g"), ("sub\\f", "second"):
    info = zipfile.ZipInfo(name)
    info.filename = name
    z.writestr(info, text)
z.close())");
  for (const char* options : {"", "", " --no-overwrite"}) {
    ASSERT_EQ(shell(*options == '\0' ? "true" : "rm -r out"), 0);
    check({{std::string("unpack a.zip out") + options, 1, "unpacked 2 files into out\n",
            "cannot extract 'sub\\f': its file is that of 'sub/f'"}});
    EXPECT_EQ(read("out/sub/f"), "first");
  }
}

}  // namespace
