// Standard input and output, and what passes through them.

#include "support/sanitized.h"
#include "tool/vesk_fs.h"

namespace {

TEST_F(VeskFs, FailsOnUnreadableInput) {
  write("file", "x");
  check({{"add a.zip file", 0, ""},
         {"add a.zip - --name in </", 1, "", "cannot read standard input"},
         {"add a.zip - --name in <&-", 1, "", "cannot read standard input"},
         {"add new.zip - --name in </", 1, "", "cannot read standard input"},
         {"list a.zip", 0, "file\n"},
         {"list a.zip >/dev/full", 1, "", "cannot write to standard output"}});
  EXPECT_FALSE(exists("new.zip"));
  // Without a standard output the archive is not written to in its place, by more than a buffer
  // has.
  for (int i = 0; i < 100; ++i) write("many/" + std::string(100, 'n') + std::to_string(i), "");
  EXPECT_EQ(support::run(folder_.path(), VESK_FS " add a.zip many -v >&-"), 1);
  EXPECT_EQ(support::run(folder_.path(), VESK_FS " list a.zip >&-"), 1);
  shell("unzip -tq a.zip");
}

// Hundreds of megabytes pass in each direction, out of the archive through a temporary file.
TEST_F(VeskFs, PassesStreamsInBlocks) {
  // The system counts the memory of a sanitizer and of an emulator too.
  const std::string limit = support::kFewSteps ? "" : "ulimit -d 100000; ";
  if (!support::fileSystem().largeFiles) GTEST_SKIP() << "zeros need space here";
  shell("mkdir tmp && truncate -s 200M zeros");
  shell(limit + "TMPDIR=none " VESK_FS " add a.zip - --name zeros <zeros");
  shell("TMPDIR=tmp " VESK_FS " extract a.zip zeros - | cmp - zeros");
  shell("test -z \"$(ls -A tmp)\"");

  shell("truncate -s 300M zeros && rm a.zip");
  shell("TMPDIR=tmp " VESK_FS " add a.zip zeros");
  shell(limit + "TMPDIR=tmp " VESK_FS " extract a.zip zeros - >/dev/null");
  // A signal that ends the program leaves nothing either.
  shell("ulimit -c 0; ulimit -f 100000; TMPDIR=tmp " VESK_FS
        " extract a.zip zeros - >/dev/null; test $(kill -l $?) = XFSZ &&"
        " test -z \"$(ls -A tmp)\"");
  // The checksum is compared when all was read, before any of it is written.
  python(R"(
bytes = bytearray(open("a.zip", "rb").read())
at = bytes.rfind(b"PK\1\2") + 16
bytes[at] ^= 1
open("bad.zip", "wb").write(bytes))");
  check({{"extract bad.zip zeros -", 1, "", "'zeros': it is damaged"}});
}

// A shell has a program in the background ignore SIGINT, and nohup has it ignore SIGHUP. Until `env`
// has started the program, SIGINT has no effect.
TEST_F(VeskFs, LeavesNoTemporaryFile) {
  if (!support::fileSystem().fifos) GTEST_SKIP() << "no FIFOs here";
  write("one", "1");
  shell(VESK_FS " add a.zip one && cp a.zip before");
  for (const char* signal : {"TERM", "HUP", "INT"}) {
    const std::string result = output(
        "rm -rf tmp fifo; mkdir tmp; mkfifo fifo; export TMPDIR=$PWD/tmp;"
        " env --default-signal=HUP,INT " VESK_FS
        " add a.zip - --name in <fifo 2>/dev/null & program=$!; exec 3>fifo; printf x >&3;"
        " until [ \"$(cat /proc/$program/comm)\" = vesk-fs ]; do sleep 0.1; done;"
        " sleep 0.2; kill -" +
        std::string(signal) +
        " $program; wait $program; test $? -gt 128 && echo ended; ls -A tmp; ls -A;"
        " cmp a.zip before");
    EXPECT_EQ(result, "ended\na.zip\nbefore\nfifo\none\ntmp\n") << signal;
  }
}

}  // namespace
