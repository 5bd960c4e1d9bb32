// The program with the names, links and terminals of Linux.

#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, PackReportsWhatItLeavesOut) {
  const std::string longName(200, 'n');
  write("in/good", "x");
  write("in/" + longName + '/' + longName, "x");
  write("in/a\\b", "x");
  ASSERT_EQ(shell("mkdir in/sub && ln -s .. in/sub/cycle && ln -s sub in/link && echo x >in/sub/y"),
            0);
  check(
      {{"pack in in/a.zip", 1, "packed 4 files into in/a.zip\n", "nn': its path has more than 259"},
       {"list in/a.zip '*b'", 0, "a\uF05Cb\n"},
       {"tree in '*b'", 0, "in/a\\b\n"}});
  ASSERT_EQ(shell("rm -r in/nn* && mkfifo in/fifo"), 0);
  check({{"pack in a.zip", 0, "packed 5 files into a.zip\n", "warning: left out 'fifo'"},
         {"pack in a.zip -q", 0, ""}});
  ASSERT_EQ(
      shell("rm in/fifo && echo x >in/locked && mkdir in/private && chmod 0 in/locked in/private"),
      0);
  const std::string result = support::outputOf(
      folder_.path(), "setpriv --bounding-set=-dac_override,-dac_read_search " VESK_FS
                      " pack in b.zip 2>&1; echo [$?]; chmod 755 in/private");
  EXPECT_NE(result.find("left out 'private/': the directory cannot be read"), std::string::npos);
  EXPECT_NE(result.find("left out 'locked': it cannot be read"), std::string::npos) << result;
  EXPECT_TRUE(result.ends_with("[1]\n")) << result;
}

TEST_F(VeskFs, UnpackDoesNotGoThroughLinks) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
for name in "link/sub/", "link/file", "good/sub/":
    z.writestr(name, "x" * ("file" in name))
z.close())");
  ASSERT_EQ(shell("mkdir -p out outside && ln -s ../outside out/link && zip -qy l.zip out/link"),
            0);
  check({{"unpack l.zip to", 0, "unpacked 1 file into to\n", "the symbolic link 'out/link'"}});
  EXPECT_EQ(read("to/out/link"), "../outside");
  const std::string result = run("unpack a.zip out");
  EXPECT_TRUE(result.starts_with("unpacked 0 files into out\n[1]\n")) << result;
  EXPECT_NE(result.find("'link/sub/': the directory cannot be created"), std::string::npos);
  EXPECT_NE(result.find("'link/file': the file cannot be created, or a link"), std::string::npos);
  EXPECT_EQ(shell("test -d out/good/sub && test -z \"$(ls outside)\""), 0);
}

TEST_F(VeskFs, ListsNamesWithoutControlCharacters) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
z.writestr("a\x1b[31m\nb\x7f\u009b\u202e\u00e9", "")
z.close())");
  check({{"list a.zip", 0, "a?[31m?b???\u00e9\n"},
         {"list a.zip 'a?[31m?b???\u00e9' --json >json", 0, ""}});
  python(R"(
import json
assert json.load(open("json"))[0]["name"] == "a\x1b[31m\nb\x7f\u009b\u202e\u00e9")");
}

// Types a password when it is asked for.
TEST_F(VeskFs, AsksForAPassword) {
  write("one", "1");
  const auto typed = [&](const std::string& arguments) {
    return support::outputOf(folder_.path(), VESK_TEST_DATA "/../tool/type-password " VESK_FS " " +
                                                 arguments + "; echo [$?]");
  };
  EXPECT_EQ(typed("add a.zip one --encrypt traditional"),
            "new password: \nthe same again: \n[0]\n");
  EXPECT_EQ(typed("extract a.zip one -"), "password for 'one': \n1[0]\n");
  EXPECT_EQ(shell("unzip -P secret -tqq a.zip"), 0);

  if (VESK_AES == 0) GTEST_SKIP() << "built without AES";
  write("in/two", "2");
  write("pass", "secret\n");
  EXPECT_EQ(typed("pack in b.zip -q --encrypt aes256"), "new password: \nthe same again: \n[0]\n");
  check({{"add b.zip one --encrypt aes256 --password-file pass", 0, ""},
         {"echo 3 | add b.zip - --name three --encrypt aes256 --password-file pass", 0, ""},
         {"extract b.zip three - --password-file one", 1, "", "the password is wrong"}});
  EXPECT_EQ(typed("test b.zip -q"), "password for 'two': \n[0]\n");
  EXPECT_EQ(shell("test $(7z t -psecret b.zip -slt | grep -c 'Everything is Ok') = 1"), 0);
  EXPECT_EQ(shell("test $(7z l -slt b.zip | grep -c '^Method = AES-256') = 3"), 0);
}

}  // namespace
