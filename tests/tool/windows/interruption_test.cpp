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
    shell("cp a.zip copy.zip");
  }
};

TEST_F(Interrupted, ChangesLeaveTheOldArchive) {
  for (const char* arguments : {"pack -9 in a.zip", "pack -9 in new.zip", "add -9 a.zip in"}) {
    shell(std::string(VESK_TEST_DATA "/../tool/press-ctrl-c " VESK_FS " ") + arguments);
    EXPECT_EQ(output("find . -type f -printf '%P\\n' | sort"), "a.zip\ncopy.zip\nin/a\nin/b\n")
        << arguments;
    shell("cmp a.zip copy.zip");
  }
}

}  // namespace
