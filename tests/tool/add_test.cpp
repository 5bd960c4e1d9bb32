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
      {"add a.zip in/makefile", 1, "", "cannot replace 'makefile' without 'Makefile'"},
      {"printf 3 | add a.zip - --name MAKEFILE", 0, ""},
      {"add a.zip in/makefile other/makefile", 1, "", "both would be the entry 'makefile'"},
      {"add new.zip in/makefile other/makefile", 1, "", "both would be the entry 'makefile'"},
      {"add new.zip in/makefile in/makefile ./in/makefile -v", 0, "added makefile\n"},
      {"list a.zip", 0, "Makefile\nmakefile\nMAKEFILE\n"},
      {"add one.zip in/makefile", 0, ""},
      {"list one.zip", 0, "Makefile\nmakefile\n"},
      {"extract a.zip makefile -", 0, "2"},
      {"remove a.zip makefile MAKEFILE", 1, "", "cannot remove 'makefile' without 'Makefile'"},
      {"remove a.zip Makefile MAKEFILE", 1, "", "cannot remove 'Makefile' without 'makefile'"},
      {"list a.zip", 0, "Makefile\nmakefile\nMAKEFILE\n"},
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
    found = {i.orig_filename: z.read(i) for i in z.infolist() if i.orig_filename != "keep"}
    expected = ["sub/f", "sub/g", "sub/h", "sub/new"]
    assert sorted(i.orig_filename for i in z.infolist() if i.orig_filename != "keep") == expected
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
