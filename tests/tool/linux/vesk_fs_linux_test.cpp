// The program with the names, links and terminals of Linux.

#include <sys/stat.h>

#include "support/sanitized.h"
#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, PacksWhatLinksLeadTo) {
  if (!support::fileSystem().links || !support::fileSystem().anyName) {
    GTEST_SKIP() << "no such files here";
  }
  write("in/good", "x");
  write("in/a\\b", "x");
  shell("mkdir in/sub && ln -s .. in/sub/cycle && ln -s sub in/link && echo x >in/sub/y");
  check({{"pack in in/a.zip --follow-links", 0, "packed 4 files into in/a.zip\n"},
         {"pack in in/a.zip", 0, "packed 5 files into in/a.zip\n"},
         {"list in/a.zip '*b'", 0, "a\uF05Cb\n"},
         {"tree in '*b'", 0, "in/a\\b\n"}});
}

TEST_F(VeskFs, LoadsNoLibraryFromTheCurrentDirectory) {
  write("libVesk.FileSystem.so.1", "no library");
  write("libstdc++.so.6", "no library");
  write("in/file", "x");
  check({{"tree in", 0, "in/file\n"}});
}

// The archive is the same with any number of threads, also where the system has no memory for the
// stack of one.
TEST_F(VeskFs, PacksWithAnyNumberOfThreads) {
  for (std::size_t i = 0; i < 50; ++i) write("in/" + std::to_string(i), std::string(i * 1000, 'x'));
  shell(VESK_FS " pack -q in a.zip -j1");
  shell(VESK_FS " pack -q in b.zip -j 3 && cmp a.zip b.zip");
  if (support::kSanitized) GTEST_SKIP() << "a sanitizer takes memory of its own";
  shell("ulimit -s 1000000; ulimit -v 600000; " VESK_FS " pack -q in c.zip -j4 && cmp a.zip c.zip");
}

// By default as many threads as there are processors which the program may use.
TEST_F(VeskFs, UsesAsManyThreadsAsAsked) {
  if (support::kFewSteps) GTEST_SKIP() << "a sanitizer and an emulator have threads of their own";
  python(R"(
import os, subprocess
def check(expected, *options):
    add = subprocess.Popen([")" VESK_FS R"(", "add", "a.zip", "-", "--name", "x", *options],
                           stdin=subprocess.PIPE)
    add.stdin.write(bytes(30 << 20))
    used = len(os.listdir(f"/proc/{add.pid}/task"))
    add.communicate()
    assert used == expected, (used, expected, options)
usable = sorted(os.sched_getaffinity(0))
for processors in usable[:1], usable[:2]:
    os.sched_setaffinity(0, processors)
    check(len(processors))
check(1, "-j1")
check(3, "-j3"))");
}

// Whatever a command leaves out is named, and the status is 1.
TEST_F(VeskFs, NamesWhatItLeavesOut) {
  if (!support::fileSystem().links || !support::fileSystem().fifos) GTEST_SKIP() << "no links here";
  const std::string longName(200, 'n');
  write("in/old.txt", "x");
  write("in/sub/readonly.txt", "x");
  shell(
      "ln -s none in/link.txt && mkfifo in/fifo.txt &&"
      " touch -d '9 days ago' in/old.txt in/sub/readonly.txt &&"
      " chmod 444 in/sub/readonly.txt");
  const auto expectLines = [&](const std::string& arguments,
                               const std::vector<std::string>& lines) {
    const std::string result = run(arguments);
    EXPECT_NE(result.find("[1]\n"), std::string::npos) << arguments << ": " << result;
    for (const std::string& line : lines) {
      EXPECT_NE(result.find(line), std::string::npos)
          << arguments << ": " << line << ": " << result;
    }
  };
  const std::vector<std::string> kNoFiles = {"link.txt': it is neither",
                                             "fifo.txt': it is neither"};
  expectLines("pack in a.zip --follow-links --no-directories", kNoFiles);
  expectLines("add b.zip in --follow-links", kNoFiles);
  expectLines("copy in copied", kNoFiles);
  expectLines("tree in", kNoFiles);
  expectLines("tree in '*.TXT'", kNoFiles);
  check({{"tree in 'o*'", 0, "in/old.txt\n"}, {"list a.zip", 0, "old.txt\nsub\\readonly.txt\n"}});
  expectLines("sweep in 3", {"kept 'sub/readonly.txt': the file or its directory is read-only"});

  shell("rm in/link.txt in/fifo.txt");
  const std::string backslashes(100, '\\');
  write("in/back/" + backslashes, "x");
  expectLines("pack in a.zip", {"'back/" + backslashes + "': the path is too long"});
  shell("rm -r in/back");
  write("in/" + longName + '/' + longName, "x");
  shell("touch -d '9 days ago' in/n*/*");
  expectLines("pack in a.zip", {"nn': the path is too long", "'a.zip' is unchanged"});
  expectLines("tree in", {"in/old.txt\n", "nn': the path is too long"});
  expectLines("tree in 'n*'", {"nn': the path is too long"});
  expectLines("sweep in 3 --dry-run", {"nn': the path is too long"});
  expectLines("sweep in 3", {"nn': the path is too long"});
  check({{"tree in 'o*'", 0, "in/old.txt\n"}});
}

// Where the system takes a path for another one than the library, the library's counts.
TEST_F(VeskFs, FindsFilesAsTheLibraryDoes) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  write("in/one", "1");
  write("in/two", "2");
  shell("mkdir -p elsewhere/sub && ln -s elsewhere/sub link");
  check({{"pack in C:a.zip -q", 0, ""},
         {"list -l C:a.zip >table", 0, ""},
         {"test -q C:a.zip", 0, ""},
         {"unpack a.zip link/../out", 0, "unpacked 2 files into link/../out\n"},
         {"unpack a.zip link/../out --no-overwrite -q", 0, ""},
         {"copy in '\\\\none\\share\\out'", 1, "",
          "cannot copy to the directory '\\\\none\\share\\out\\': it does not exist"}});
  shell("diff -r in out && test ! -e elsewhere/out");
}

TEST_F(VeskFs, AddsTheOthersAfterAFileThatFails) {
  if (!support::fileSystem().links) GTEST_SKIP() << "no links here";
  write("in/a", "x");
  write("in/c", "x");
  shell("ln -s /proc/self/mem in/b");
  check({{"add a.zip in/a /proc/self/mem in/c -v", 1, "added a\nadded c\n",
          "cannot add '/proc/self/mem': the file cannot be read to its end"},
         {"add b.zip in -v --follow-links", 1, "added in\\\nadded in\\a\nadded in\\c\n",
          "cannot add 'in\\b': the file cannot be read to its end"}});
}

TEST_F(VeskFs, NamesInOtherLetterCaseAreOtherFiles) {
  if (!support::fileSystem().exactCase) GTEST_SKIP() << "one file here";
  for (const char* name : {"in/a", "in/A", "in/b/x", "in/B/x", "in/B/X"}) write(name, name);
  check({{"pack in a.zip", 0, "packed 5 files into a.zip\n"},
         {"unpack a.zip out", 0, "unpacked 5 files into out\n"},
         {"add b.zip in", 0, ""},
         {"unpack b.zip added", 0, "unpacked 5 files into added\n"}});
  shell("diff -r in out && diff -r in added/in");
}

TEST_F(VeskFs, KeepsPermissionsTimesAndLinks) {
  if (!support::fileSystem().links || !support::fileSystem().modes) GTEST_SKIP() << "not here";
  write("in/file", "x");
  write("in/a:b", "x");
  shell(
      "ln -s file in/link && mkdir in/folder && ln -s folder in/to-folder &&"
      " chmod 4640 in/file && touch -d @1700000001 in/file");
  const auto statusOf = [&](const char* file) {
    return output(std::string("stat -c '%a %Y' ") + file);
  };
  check({{"add a.zip in", 0, ""},
         {"unpack a.zip out", 0, "unpacked 4 files into out\n"},
         {"unpack a.zip none --no-links", 0, "unpacked 2 files into none\n"},
         {"extract a.zip in/file f", 0, ""},
         {"extract a.zip in/link l", 0, ""},
         {"extract a.zip in/link -", 0, "file"},
         {"add b.zip in/link in/to-folder -v", 0, "added link\nadded to-folder\n"}});
  EXPECT_EQ(statusOf("out/in/file"), "640 1700000001\n");
  EXPECT_EQ(statusOf("f"), "640 1700000001\n");
  shell("test $(readlink out/in/link) = file && test $(readlink l) = file");

  const mode_t mask = umask(022);
  check({{"pack in c.zip --no-permissions --no-times", 0, "packed 4 files into c.zip\n"},
         {"unpack c.zip plain -q", 0, ""},
         {"extract c.zip a:b into/", 0, ""},
         {"pack in d.zip --set-id -q", 0, ""},
         {"unpack d.zip id --set-id -q", 0, ""},
         {"unpack d.zip bare --no-permissions --no-times -q", 0, ""}});
  umask(mask);
  EXPECT_EQ(statusOf("id/file"), "4640 1700000001\n");
  // Every entry has a time in steps of two seconds.
  EXPECT_EQ(statusOf("plain/file"), "644 1700000000\n");
  shell("test $(stat -c %a bare/file) = 644 && test bare/file -nt d.zip");
  shell("test -f into/a:b");
}

// The first and the last of each range, and the characters next to it.
TEST_F(VeskFs, ShowsNamesWithoutControlCharacters) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
z.writestr("a\x1b[31m\nb\x01\x1f \x7e\x7f\x80\x9b\x9f\xa1", "")
z.writestr("c\u2027\u2028\u2029\u202a\u202e\u202f", "")
z.writestr("d\u2065\u2066\u2069\u206a\u00e9", ""))");
  check({{"list a.zip", 0, "a?[31m?b?? ~????\u00a1\nc\u2027????\u202f\nd\u2065??\u206a\u00e9\n"},
         {"test a.zip 'x\x1f\u009by'", 2, "", "'x??y'"},
         {"list 'x\x1f\u009b\x9by'", 1, "", "'x???y'"},
         {"list a.zip 'a?*' --json >json", 0, ""}});
  python(R"(
import json
assert json.load(open("json"))[0]["name"] == "a\x1b[31m\nb\x01\x1f \x7e\x7f\x80\x9b\x9f\xa1")");
  if (!support::fileSystem().anyName) GTEST_SKIP() << "no such names on the disk";
  write("in/x\x1f\u009by", "");
  EXPECT_EQ(output(VESK_TEST_DATA "/../tool/type-password " VESK_FS " tree in"), "in/x??y\n");
  check({{"tree in", 0, "in/x\x1f\u009by\n"}});
}

class VeskFsOnATerminal : public VeskFs {
 protected:
  // What a terminal shows, and the exit status. `before` is shell text.
  std::string typed(const std::string& arguments, const std::string& before = {}) const {
    return output(before + VESK_TEST_DATA "/../tool/type-password " VESK_FS " " + arguments +
                  "; echo [$?]");
  }
};

TEST_F(VeskFsOnATerminal, AsksForAPassword) {
  write("one", "1");
  EXPECT_EQ(typed("add a.zip one -q --encrypt traditional"),
            "new password: \nthe same again: \n[0]\n");
  EXPECT_EQ(typed("add b.zip one --encrypt traditional", "TYPED=$(printf 'a\\n|b\\n|') "),
            "new password: \nthe same again: \nvesk-fs: the two passwords differ\n[1]\n");
  EXPECT_EQ(typed("add b.zip one --encrypt traditional", "TYPED=$(printf '\\n|\\n|') "),
            "new password: \nvesk-fs: no password was given\n[1]\n");
  EXPECT_EQ(typed("add b.zip one --encrypt traditional", "TYPED=$(printf 'a^@b\\n|') "),
            "new password: \nvesk-fs: the password that was typed has a zero byte, which no "
            "password can have\n[1]\n");
  EXPECT_FALSE(exists("b.zip"));
  EXPECT_EQ(typed("extract a.zip one - -q"), "password for 'one': \n1[0]\n");
  shell("unzip -P secret -tqq a.zip");

  // Another program creates the file while the password is typed.
  ASSERT_EQ(setenv("BEFORE_TYPING", "printf mine >out/one", 1), 0);
  EXPECT_EQ(typed("unpack a.zip out --no-overwrite -q"), "password for 'one': \n[0]\n");
  unsetenv("BEFORE_TYPING");
  EXPECT_EQ(read("out/one"), "mine");

  if (VESK_AES == 0) GTEST_SKIP() << "built without AES";
  write("in/two", "2");
  write("pass", "secret\n");
  EXPECT_EQ(typed("pack in b.zip -q --encrypt aes256"), "new password: \nthe same again: \n[0]\n");
  check({{"add b.zip one --encrypt aes256 --password-file pass", 0, ""},
         {"echo 3 | add b.zip - --name three --encrypt aes256 --password-file pass", 0, ""},
         {"extract b.zip three - --password-file one", 1, "", "the password is wrong"}});
  EXPECT_EQ(typed("test b.zip -q"), "password for 'two': \n[0]\n");
  shell("test $(7z t -psecret b.zip -slt | grep -c 'Everything is Ok') = 1");
  shell("test $(7z l -slt b.zip | grep -c '^Method = AES-256') = 3");
}

// A line fits into the width of the terminal but for its last column. 80 columns are usual where the
// width is not known.
TEST_F(VeskFsOnATerminal, ShowsProgressOfWhatTakesLong) {
  const auto shown = [&](const std::string& columns, const std::string& zip,
                         const std::string& first = "true") {
    return output(VESK_TEST_DATA "/../tool/type-password /bin/sh -c 'stty cols " + columns + "; (" +
                  first + "; sleep 2; echo x) | " VESK_FS " add " + zip + " - --name x'");
  };
  EXPECT_NE(shown("20", "語言.zip").find("adding to 語, "), std::string::npos);
  EXPECT_NE(shown("0", std::string(80, 'n')).find(" to " + std::string(62, 'n') + ", "),
            std::string::npos);
  EXPECT_NE(shown("80", "a.zip", "head -c 4000000 /dev/zero").find(" MB/s, "), std::string::npos);
  // Only the numbers fit, and all of them.
  EXPECT_EQ(shown("8", "a.zip").find(", "), std::string::npos);
  EXPECT_EQ(shown("80", "-q a.zip"), "");
}

TEST_F(VeskFsOnATerminal, EndsAtCtrlCInsteadOfAPassword) {
  write("in/one", "1");
  write("pass", "secret\n");
  run("add a.zip in/one --password-file pass");
  const std::string ctrlC = "TYPED=$(printf '\\003') ";
  for (const char* arguments :
       {"extract a.zip one out", "extract a.zip one -", "unpack a.zip out", "test a.zip"}) {
    EXPECT_EQ(typed(arguments, ctrlC), "password for 'one': \n[130]\n") << arguments;
  }
  for (const char* arguments :
       {"add b.zip in --encrypt traditional", "add a.zip in --encrypt traditional",
        "pack in b.zip --encrypt traditional"}) {
    EXPECT_EQ(typed(arguments, ctrlC), "new password: \n[130]\n") << arguments;
    EXPECT_EQ(typed(arguments, "TYPED=$(printf 'x\\n|\\003') "),
              "new password: \nthe same again: \n[130]\n")
        << arguments;
  }
  shell("test \"$(echo $(find . -type f | sort))\" = './a.zip ./in/one ./pass'");
  check({{"list a.zip", 0, "one\n"}});

  // Ctrl-Z stops nothing that has no shell; the question is asked again.
  EXPECT_EQ(typed("extract a.zip one -", "TYPED=$(printf 'sec\\032|secret\\n|') "),
            "password for 'one': \npassword for 'one': \n1[0]\n");
  EXPECT_EQ(typed("extract a.zip one -", "TYPED=$(printf '\\004') "),
            "password for 'one': \nvesk-fs: cannot extract 'one': it is encrypted and needs a "
            "password\n[1]\n");
}

}  // namespace
