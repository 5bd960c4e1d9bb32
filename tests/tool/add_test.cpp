// What `add` and `remove` change, and what they refuse.

#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, ChangesNoOtherEntry) {
  makeZip("a.zip", "Makefile=1 makefile=2");
  makeZip("one.zip", "Makefile=1");
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
      {"list a.zip 'm*'", 0, "makefile\n"},
      {"add one.zip in/makefile", 0, ""},
      {"list one.zip", 0, "Makefile\nmakefile\n"},
      {"remove a.zip makefile MAKEFILE", 0, ""},
      {"list a.zip", 0, "Makefile\n"},
  });
}

TEST_F(VeskFs, AddNamesFilesByTheirDirectory) {
  write("in/a", "a");
  write("in/deep/b", "b");
  write("in/..c/d", "d");
  shell("cd in/deep && " VESK_FS " add ../../up.zip .. && " VESK_FS " add ../../dot.zip .");
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
  makeZip("a.zip", "a=1 b=b a=2 c=c");
  shell("cp a.zip added.zip");
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

}  // namespace
