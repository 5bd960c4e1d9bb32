// Ctrl-C on a console while a command writes. It leaves the old archive, and no temporary file.

#include "tool/vesk_fs.h"

namespace {

class Interrupted : public VeskFs {
 protected:
  // Two files that take long to compress, and an archive.
  void SetUp() override {
    python(R"(
import os
os.mkdir("in")
for path in "in/a", "in/b":
    with open(path, "w") as file:
        file.write(os.urandom(12 << 20).hex())
with zipfile.ZipFile("a.zip", "w") as z:
    z.writestr("small", "x"))");
    ASSERT_EQ(shell("cp a.zip copy.zip"), 0);
  }
};

TEST_F(Interrupted, ChangesLeaveTheOldArchive) {
  for (const char* arguments : {"pack -9 in a.zip", "pack -9 in new.zip", "add -9 a.zip in"}) {
    EXPECT_EQ(shell(std::string(VESK_TEST_DATA "/../tool/press-ctrl-c " VESK_FS " ") + arguments),
              0)
        << arguments;
    EXPECT_EQ(support::outputOf(folder_.path(), "find . -type f -printf '%P\\n' | sort"),
              "a.zip\ncopy.zip\nin/a\nin/b\n")
        << arguments;
    EXPECT_EQ(shell("cmp a.zip copy.zip"), 0) << arguments;
  }
}

}  // namespace
