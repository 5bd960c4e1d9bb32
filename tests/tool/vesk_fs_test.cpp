#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, PacksAndUnpacks) {
  write("in/sub/a.txt", "a");
  write("in/b.txt", "b");
  check({
      {"pack in a.zip", 0, "packed 2 files into a.zip\n"},
      {"list a.zip", 0, ".\\\nsub\\\nb.txt\nsub\\a.txt\n"},
      {"unpack a.zip out/deep", 0, "unpacked 2 files into out/deep\n"},
      {"test a.zip", 0, "tested 4 entries of a.zip: no errors\n"},
      // As a shell completes the names of directories.
      {"pack in/ b.zip -q", 0, ""},
      {"-v unpack b.zip other//place/", 0,
       "extracted .\\\nextracted sub\\\nextracted b.txt\nextracted sub\\a.txt\n"
       "unpacked 2 files into other//place/\n"},
  });
  shell("diff -r in out/deep && diff -r in other/place");

  write("other/place/b.txt", "mine");
  check({{"unpack b.zip other/place --no-overwrite", 0,
          "unpacked 0 files into other/place, kept 2 existing files\n"}});
  EXPECT_EQ(read("other/place/b.txt"), "mine");

  // A power failure during an append can leave zeros.
  shell("head -c 2000000 /dev/zero >>a.zip");
  check({{"test a.zip", 0, "tested 4 entries of a.zip: no errors\n", "2000000 bytes of 'a.zip'"},
         {"unpack a.zip third", 0, "unpacked 2 files into third\n"}});
}

TEST_F(VeskFs, ChangesEntries) {
  write("one", "1");
  write("in/two", "2");
  write("in/deep/three.txt", "3");
  write("pass", "secret\nmore\n");
  write("crlf", "secret\r\nmore\r\n");
  write("empty.zip", "");
  check({
      {"add a.zip one --password-file pass", 0, ""},
      {"add a.zip in one --name x", 2, "", "--name is for a single file"},
      {"add a.zip in/two in/two in -v", 0,
       "added two\nadded in\\\nadded in\\deep\\\nadded in\\deep\\three.txt\nadded in\\two\n"},
      {"add a.zip one --name named/it", 0, ""},
      {"printf 12 | add a.zip - --name input", 0, ""},
      {"printf 12 | add a.zip -", 2, "", "standard input (-) is added alone and needs --name"},
      {"add a.zip one --password-file empty.zip", 1, "",
       "the first line of the password file 'empty.zip' is empty"},
      {"add empty.zip one", 0, ""},
      {"list empty.zip", 0, "one\n"},
      {"list a.zip", 0,
       "one\ntwo\nin\\\nin\\deep\\\nin\\deep\\three.txt\nin\\two\nnamed/it\ninput\n"},
      {"list a.zip 'in/*.t?t' 'named*'", 0, "in\\deep\\three.txt\nnamed/it\n"},
      {"list a.zip x", 1, "", "'a.zip' has no entry 'x'"},
      {"extract a.zip in/deep/ -", 1, "", "'in/deep/' selects only directories"},
      {"extract a.zip input -", 0, "12"},
      {"extract a.zip in/two new/place/", 0, ""},
      {"extract a.zip 'in/*' all -v", 0, "extracted in\\deep\\three.txt\nextracted in\\two\n"},
      {"extract a.zip one out/x --password-file pass", 0, ""},
      {"extract a.zip one y --password wrong -q", 1, "", "the password is wrong or it is damaged"},
      {"extract a.zip one y </dev/null", 1, "", "needs a password"},
      {"add a.zip one --encrypt aes128", 2, "", "--encrypt: 'aes128' is not one of its values"},
      {"test a.zip --password-file pass", 0, "tested 8 entries of a.zip: no errors\n"},
      {"test a.zip --password-file crlf", 0, "tested 8 entries of a.zip: no errors\n"},
      {"test a.zip", 1, "tested 8 entries of a.zip: 1 error\n", "'one': it is encrypted"},
      {"remove a.zip 'in/*' named/it -v", 0,
       "removed in\\\nremoved in\\deep\\\nremoved in\\deep\\three.txt\nremoved in\\two\n"
       "removed named/it\n"},
      {"add a.zip one --name TWO", 0, ""},
      {"remove a.zip TWO missing", 1, "", "has no entry 'missing'"},
      {"remove a.zip two", 0, ""},
      {"list a.zip", 0, "one\ninput\nTWO\n"},
      {"remove empty.zip '*' -v", 0, "removed one\n"},
      {"list empty.zip", 0, ""},
  });
  EXPECT_EQ(read("out/x"), "1");
  EXPECT_EQ(read("new/place/two"), "2");
  EXPECT_EQ(read("all/in/two"), "2");
  EXPECT_FALSE(exists("y"));
  EXPECT_NE(run("extract a.zip one y --password secret").find("other users can see"),
            std::string::npos);
}

// The rest of such a password would be lost; without a byte before, the file would not be encrypted.
TEST_F(VeskFs, RefusesPasswordsWithAZeroByte) {
  using std::string_literals::operator""s;
  write("file", "x");
  write("first", "\0secret\n"s);
  write("utf-16", "\xFF\xFEs\0e\0\n\0"s);
  write("second-line", "secret\n\0"s);
  check({{"add a.zip file --password-file first", 1, "", "in the first line of 'first' has a zero"},
         {"add a.zip file --password-file utf-16 --encrypt traditional", 1, "", "'utf-16'"},
         {"list a.zip", 1, "", "'a.zip'"},
         {"add a.zip file --password-file second-line", 0, ""},
         {"extract a.zip file - --password-file utf-16", 1, "", "'utf-16'"}});
  shell("unzip -P secret -tqq a.zip");
  shell(VESK_FS " list -l a.zip | grep -q ' zip  *file'");
}

TEST_F(VeskFs, DescribesEntries) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w")
def add(name, data, method, comment=b""):
    info = zipfile.ZipInfo(name, (2024, 2, 29, 12, 34, 56))
    info.compress_type, info.comment = method, comment
    z.writestr(info, data)
add("dir/", "", 0)
add("a\"b", "x" * 1000, 8, "\u00e9\n\ud7ff".encode() + b"\x80")
add("c", "abc", 0)
z.comment = b"PK\5\6" + b"x" * 17
z.close()
data = bytearray(open("a.zip", "rb").read())
data[z.getinfo("c").header_offset + 8] = data[data.rindex(b"PK\1\2") + 10] = 98
open("a.zip", "wb").write(data))");
  check(
      {{"list -l a.zip", 0,
        R"(        size       packed  saved  modified             CRC-32    method     encrypt  name
           0            0     0%  2024-02-29 12:34:56  00000000  stored     none     dir/
        1000           11    98%  2024-02-29 12:34:56  3b41c9e6  deflate    none     a"b
           3            3     0%  2024-02-29 12:34:56  352441c2  PPMd       none     c
        1003           14    98%  2 files, 1 directory
)"},
       {"list a.zip 'a*' --json", 0,
        "[\n  {\"name\": \"a\\\"b\", \"directory\": false, \"size\": 1000, \"packedSize\": 11, "
        "\"modified\": \"2024-02-29T12:34:56\", \"crc32\": \"3b41c9e6\", \"method\": \"deflate\", "
        "\"encryption\": \"none\", \"comment\": \"\u00e9\\u000a\ud7ff\\ufffd\"}\n]\n"},
       {"test a.zip", 1, "tested 3 entries of a.zip: 1 error\n",
        "'c': its compression method, PPMd, is not supported"}});
  shell(VESK_FS " list -l a.zip c | grep -q '1 file, 0 directories'");
}

// A change of the help has to be made in help.txt too, where it is reviewed.
TEST_F(VeskFs, DescribesItself) {
  std::string help = run("--help");
  for (const char* const command : {"pack", "unpack", "list", "test", "add", "remove", "extract",
                                    "tree", "copy", "sweep", "version", "xml get"}) {
    help += '\n' + run(command + std::string(" --help"));
  }
  EXPECT_EQ(help, support::readFile(VESK_TEST_DATA "/help.txt"));
}

TEST_F(VeskFs, NamesWhatFails) {
  python(R"(
z = zipfile.ZipFile("a.zip", "w", 8)
for name in ("bad", "good", "../../out", "in/file", "in/dir", "x", "x", "sub/f", "sub\\f",
             "n" * 261):
    z.writestr(name, name * 99)
z.close()
bytes = bytearray(open("a.zip", "rb").read())
bytes[z.getinfo("bad").header_offset + 36] ^= 255
bytes[-6:-2] = (z.start_dir + 108).to_bytes(4, "little")
open("a.zip", "wb").write(bytes[:z.start_dir] + b"unused bytes" * 9 + bytes[z.start_dir:])
bytes[0] ^= 255
open("header.zip", "wb").write(bytes[:z.start_dir] + b"unused bytes" * 9 + bytes[z.start_dir:]))");
  check({{"remove header.zip good", 1, "", "'header.zip': its entry 'bad' is damaged"}});
  write("out/in/file", "old");
  write("out/in/dir/x", "old");
  support::makeReadOnly(folder_.file("out/in/file"));
  const std::string result = run("unpack a.zip out -q");
  for (const char* line :
       {"the entry 'x' occurs again", "'bad': it is damaged",
        "'../../out': its name escapes the directory",
        "'in/file': the file or its directory is read-only", "'in/dir': a directory has its name",
        "nnn': the path is too long", "'sub\\f': its file is that of 'sub/f'"}) {
    EXPECT_NE(result.find(line), std::string::npos) << line << ": " << result;
  }
  EXPECT_TRUE(result.starts_with("[1]\n")) << result;
  EXPECT_EQ(std::count(result.begin(), result.end(), '\n'), 8) << result;
  EXPECT_EQ(read("out/in/file") + read("out/x"), "old" + std::string(99, 'x'));
  shell("test $(find . -type f | wc -l) = 7");

  check({{"extract a.zip '*d' some -v", 1, "extracted good\n", "'bad': it is damaged"}});
  const std::string tested = run("test a.zip");
  EXPECT_TRUE(tested.starts_with("tested 10 entries of a.zip: 1 error\n[1]\n")) << tested;
  EXPECT_NE(tested.find("84 bytes of 'a.zip' belong to no entry"), std::string::npos) << tested;
}

TEST_F(VeskFs, CompressesAsAsked) {
  std::string text;
  for (int i = 0; i < 20000; ++i) text += "word " + std::to_string(i * i % 977);
  write("in/text", text);
  const auto sizeAfter = [this](const std::string& command) {
    EXPECT_TRUE(run(command + " -q").starts_with("[0]\n")) << command;
    EXPECT_NE(run("test a.zip").find(" of a.zip: no errors\n"), std::string::npos) << command;
    const auto size = std::filesystem::file_size(folder_.file("a.zip"));
    std::filesystem::remove(folder_.file("a.zip"));
    return size;
  };
  for (const char level : std::string_view("0123456789")) {
    check({{std::string("pack -q in a.zip -") + level, 0, ""}});
  }
  for (const std::string command : {"pack in a.zip ", "add a.zip in/text "}) {
    const auto stored = sizeAfter(command + "-0");
    const auto fastest = sizeAfter(command + "-1");
    const auto smallest = sizeAfter(command + "-q9");
    EXPECT_GT(stored, text.size());
    EXPECT_GT(stored, fastest);
    EXPECT_GT(fastest, smallest);
    EXPECT_EQ(sizeAfter(command + "--level 9 --method deflate"), smallest);
    if (VESK_ZSTD == 0) continue;
    run(command + "--method zstd");
    EXPECT_NE(run("list -l a.zip").find("Zstandard"), std::string::npos);
    EXPECT_LT(sizeAfter(command + "--method zstd -9"), fastest);
  }
}

TEST_F(VeskFs, SaysWhatIsWrong) {
  write("text.zip", "no archive");
  write("in/file", "x");
  run("pack in a.zip");
  check({
      {"pack none b.zip", 1, "", "there is no directory 'none'"},
      {"pack in none/b.zip", 1, "",
       "cannot write 'none/b.zip', which is unchanged: it does not exist"},
      {"unpack none.zip x", 1, "", "cannot open 'none.zip': it does not exist"},
      {"unpack a.zip text.zip", 1, "", "cannot create or write to the directory 'text.zip': "},
      {"list in", 1, "", "'in' is a directory"},
      {"list text.zip", 1, "", "'text.zip' is not a sound zip archive"},
      {"add text.zip in/file", 1, "", "cannot change 'text.zip': it is not a sound zip archive"},
      {"add b.zip in/file none text.zip -v", 1, "added file\nadded text.zip\n",
       "cannot add 'none': it does not exist"},
      {"list b.zip", 0, "file\ntext.zip\n"},
      {"add new.zip none", 1, "", "cannot add 'none': it does not exist"},
      {"list new.zip", 1, "", "'new.zip'"},
      {"add a.zip in/file --password-file none", 1, "", "cannot read the password file 'none'"},
      {"tree none", 1, "", "there is no directory 'none'"},
      {"", 2, "", "a command is required (see vesk-fs --help)"},
      {"nonsense", 2, "", "unknown command 'nonsense'"},
      {"pack --all in a.zip", 2, "", "unknown option '--all'"},
      {"pack in", 2, "", "ZIP is required (see vesk-fs pack --help)"},
      {"pack in a.zip b.zip", 2, "", "unexpected argument 'b.zip'"},
      {"sweep in -1", 2, "", "unknown option '-1' (see vesk-fs sweep --help)"},
      {"list a.zip -l --json", 2, "", "--json excludes --long"},
      {"pack in b.zip --level 10", 2, "", "--level: '10' is not one of its values"},
      {"pack in b.zip -10", 2, "", "--level occurs twice"},
      {"pack in b.zip -j0", 2, "", "--jobs: '0' is not in 1 to 256"},
      {"pack in b.zip -qj 257", 2, "", "--jobs: '257' is not in 1 to 256"},
      {"pack in b.zip -j2q", 2, "", "--jobs: '2q' is no number"},
  });
  EXPECT_EQ(read("text.zip"), "no archive");
  const std::string version = run("--version");
  EXPECT_TRUE(version.starts_with("vesk-fs 1.")) << version;
  EXPECT_TRUE(version.ends_with("\n[0]\n")) << version;
}

TEST_F(VeskFs, CopiesSweepsAndReads) {
  write("in/sub/a", "a");
  write("in/b.tmp", "b");
  write("blocked/b.tmp/x", "");
  write("f.xml", "<a k=\"&lt;1\">x &amp; y</a>");
  check({
      {"copy in/ out/new/", 0, "copied 2 files\n"},
      {"copy in '" + folder_.file("rooted") + "'", 0, "copied 2 files\n"},
      {"copy in/b.tmp single/place", 0, ""},
      {"copy in blocked", 1, "copied 1 file\n", "cannot copy 'b.tmp': a directory has its name"},
      {"copy none out", 1, "", "cannot copy 'none' to '.\\out\\': it does not exist"},
      {"copy in in/b.tmp/x", 1, "", "cannot copy to the directory '.\\in/b.tmp/x\\': "},
      {"sweep none 2", 1, "", "there is no directory 'none'"},
      {"version " VESK_TEST_DATA "/version/special1.dll", 0, "2.5.1A\n"},
      {"version f.xml", 1, "", "'f.xml' has no version resource with a ProductVersion"},
      {"xml get f.xml a", 0, "x & y\n"},
      {"xml get f.xml a k", 0, "<1\n"},
      {"xml get f.xml b", 1, "", "'f.xml' has no element 'b', or it is empty"},
      {"xml get f.xml a b", 1, "", "'f.xml' has no attribute 'b' of element 'a', or it is empty"},
      {"xml get none a", 1, "", "cannot read the file 'none'"},
  });
  shell("diff -r in out/new && diff -r in rooted && cmp in/b.tmp single/place/b.tmp");

  shell("touch -d '3 days ago' in/sub/a in/b.tmp");
  const std::string separator(1, static_cast<char>(std::filesystem::path::preferred_separator));
  const std::string files = "in" + separator + "b.tmp\nin" + separator + "sub" + separator + "a\n";
  check({{"tree in", 0, files},
         {"tree in/ 'B.*'", 0, files.substr(0, files.find('\n') + 1)},
         {"sweep in 4 --dry-run", 0, ""},
         {"sweep in 2 --dry-run", 0, files}});
  shell("test -f in/sub/a");
  check({{"sweep in 2", 0, "deleted 2 files\n"}});
  EXPECT_FALSE(exists("in/sub"));
}

}  // namespace
