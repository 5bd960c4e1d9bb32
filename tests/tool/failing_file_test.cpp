// One file or entry of several that fails: it is named, the status is 1, and the others are what the
// command promises.

#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, NamesTheEntryThatFails) {
  python(R"(
z = zipfile.ZipFile("data.zip", "w", 8)
for name in "a", "b", "c":
    z.writestr(name, name * 9)
z.close()
sound = open("data.zip", "rb").read()
def damage(path, position):
    damaged = bytearray(sound)
    damaged[position] ^= 255
    open(path, "wb").write(damaged)
header = z.getinfo("b").header_offset
damage("data.zip", header + 32)
damage("header.zip", header)
damage("directory.zip", sound.rfind(b"PK\1\2", 0, sound.rfind(b"PK\1\2"))))");
  check({
      {"unpack data.zip out -v", 1, "extracted a\nextracted c\nunpacked 2 files into out\n",
       "cannot extract 'b': it is damaged"},
      {"extract data.zip '*' some -v", 1, "extracted a\nextracted c\n",
       "cannot extract 'b': it is damaged"},
      {"test data.zip -v", 1, "sound a\nsound c\ntested 3 entries of data.zip: 1 error\n",
       "'b': it is damaged"},
      {"list directory.zip", 1, "", "'directory.zip' is not a sound zip archive"},
      {"test directory.zip", 1, "", "'directory.zip' is not a sound zip archive"},
      {"remove data.zip a none c", 1, "", "'data.zip' has no entry 'none'"},
      {"remove header.zip c", 1, "", "'header.zip': its entry 'b' is damaged"},
      {"list data.zip", 0, "a\nb\nc\n"},
      {"list header.zip", 0, "a\nb\nc\n"},
      {"remove data.zip c", 0, ""},
      {"list data.zip", 0, "a\nb\n"},
  });
  EXPECT_EQ(read("out/a") + read("out/c"), "aaaaaaaaaccccccccc");
  EXPECT_FALSE(support::exists(folder_.file("out/b")));
  EXPECT_EQ(read("some/a") + read("some/c"), "aaaaaaaaaccccccccc");

  write("c", "new");
  check({{"add header.zip c", 1, "", "'header.zip': its entry 'b' is damaged"},
         {"list header.zip", 0, "a\nb\nc\n"}});
}

}  // namespace
