// Ctrl-C while a command writes. The program ends as a shell expects it, leaves no temporary file,
// and leaves every file that it was to change as it was.

#include "tool/vesk_fs.h"

namespace {

class Interrupted : public VeskFs {
 protected:
  void SetUp() override {
    python(R"(
import os
block = os.urandom(1 << 20)
for path in "in/a", "in/b", "old/a":
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        for _ in range(50):
            file.write(block)
with zipfile.ZipFile("a.zip", "w") as z:
    z.writestr("small", "x")
    z.write("in/a", "a")
    z.write("in/b", "b"))");
    shell("echo old >old/a && cp a.zip copy.zip && mkdir tmp");
  }

  // The exit status of a run that is interrupted when it has written this number of bytes, and then
  // the names of all files, hidden ones too.
  std::string interrupted(const std::string& arguments, long bytes) const {
    return output("TMPDIR=$PWD/tmp " VESK_TEST_DATA "/../tool/interrupt " + std::to_string(bytes) +
                  " " VESK_FS " " + arguments +
                  " >/dev/null; echo [$?] $(find . -type f -printf '%P\\n' | sort)");
  }

  // Interrupts the command at the beginning and in the second file.
  void expectNoChange(const std::string& arguments) const {
    for (const long bytes : {1L, 5'000'000L, 75'000'000L}) {
      EXPECT_EQ(interrupted(arguments, bytes), "[130] a.zip copy.zip in/a in/b old/a\n")
          << arguments << " at " << bytes;
      shell("cmp a.zip copy.zip");
      EXPECT_EQ(read("old/a"), "old\n") << arguments << " at " << bytes;
    }
  }
};

TEST_F(Interrupted, ChangesLeaveTheOldArchive) {
  for (const char* arguments : {"pack in a.zip", "pack in new.zip", "add a.zip in",
                                "add a.zip in/a in/b", "remove a.zip small"}) {
    expectNoChange(arguments);
  }
}

// A file that is complete remains, as one does after every other end.
TEST_F(Interrupted, UnpackAndExtractLeaveWholeFiles) {
  for (const char* arguments : {"unpack a.zip old", "extract a.zip '*' old"}) {
    EXPECT_EQ(interrupted(arguments, 5'000'000), "[130] a.zip copy.zip in/a in/b old/a old/small\n")
        << arguments;
    EXPECT_EQ(read("old/a"), "old\n") << arguments;
    shell("rm old/small");
  }
  EXPECT_EQ(interrupted("extract a.zip a new", 5'000'000),
            "[130] a.zip copy.zip in/a in/b old/a\n");
}

TEST_F(Interrupted, CopyLeavesTheOldFile) {
  EXPECT_EQ(interrupted("copy in old", 5'000'000), "[130] a.zip copy.zip in/a in/b old/a\n");
  EXPECT_EQ(read("old/a"), "old\n");
}

}  // namespace
