// Permissions, times, links and folders that come back from an archive.

#include <sys/stat.h>

#include "library/reports.h"
#include "library/zip.h"

namespace {

using namespace FileSystem;

class Metadata : public Zip {
 protected:
  void SetUp() override {
    if (!support::fileSystem().modes || !support::fileSystem().links) {
      GTEST_SKIP() << "no modes or links here";
    }
  }
  void makeTree() const {
    shell(R"(set -e
mkdir -p in/sub/deep in/empty in/closed in/private in/shared in/c: && cd in
for mode in 600 755 444 666 400 777; do printf $mode >sub/$mode && chmod $mode sub/$mode; done
printf x >a:b; printf d >c:/d; printf c >closed/content; printf p >private/content; printf old >sub/deep/old
ln -s sub/755 relative; ln -s /etc/passwd absolute; ln -s missing dangling; ln -s . loop
ln -s ../../outside sub/escaping
chmod 555 closed; chmod 700 private; chmod 1777 shared; chmod 777 empty; chmod 751 .
touch -d '1969-12-31 23:59:57 UTC' sub/deep/old
touch -d '2038-01-19 03:14:08 UTC' sub/600
touch -h -d @1000000001 dangling
find . -mindepth 1 ! -name old ! -name 600 ! -name dangling -type f -exec touch -d @1700000001 {} +
find . -depth -type d -exec touch -d @1600000003 {} +
touch -h -d @1600000005 relative absolute loop sub/escaping; touch -d @1600000003 sub .)");
  }
  // Kinds, permissions, whole seconds and targets of all below a folder.
  std::string listing(const std::string& folder, const std::string& conditions = "") const {
    return output("cd " + folder + " && find . " + conditions +
                  R"( \( -type l -printf '%p %y %T@ %l\n' -o -printf '%p %y %m %T@\n' \))"
                  " | sed 's/\\.[0-9]*\\( \\|$\\)/\\1/' | LC_ALL=C sort");
  }
  Report unpack(const Options& options = {}) const {
    const Archive archive = openArchive();
    return archive.unpack(archive.entries(), out_.c_str(), options);
  }
  // Adds entries, each a Python expression of name, content and mode.
  void makeEntries(const std::string& entries) const {
    python(R"(
z = zipfile.ZipFile("a.zip", "w")
def add(name, content=b"", mode=0o100644, extra=b"", attributes=0, host=3):
    info = zipfile.ZipInfo(name)
    info.external_attr, info.create_system, info.extra = mode << 16 | attributes, host, extra
    z.writestr(info, content)
)" + entries +
           "\nz.close()");
  }
  mode_t modeOf(const std::string& path) const {
    struct stat status {};
    lstat(path.c_str(), &status);
    return status.st_mode & 07777;
  }
};

TEST_F(Metadata, ATreeComesBackAsItWas) {
  makeTree();
  const std::string expected = listing("in");
  for (const mode_t mask : {mode_t{0}, mode_t{077}}) {
    SCOPED_TRACE(mask);
    const mode_t before = umask(mask);
    ASSERT_TRUE(packFolder(in_.c_str(), path_.c_str()));
    EXPECT_TRUE(unpack());
    umask(before);
    EXPECT_EQ(listing("out"), expected);
    shell("diff -r --no-dereference in out");
    shell("chmod -R u+rwx out && rm -r out");
  }
}

TEST_F(Metadata, OtherProgramsUnpackTheTree) {
  makeTree();
  // bsdtar takes it for a drive.
  shell("rm in/a:b && touch -h -d @1600000005 in/dangling && touch -d @1600000003 in");
  ASSERT_TRUE(packFolder(in_.c_str(), path_.c_str()));
  // They have no times before 1970 and after 2038.
  const std::string conditions = "! -name 600 ! -name old";
  const std::string expected = listing("in", conditions);
  for (const char* const program : {"unzip -qq ../a.zip", "bsdtar -xpf ../a.zip"}) {
    shell("chmod -Rf u+w out; rm -rf out && mkdir out && chmod 751 out && cd out && " +
          std::string(program));
    // They restore neither sticky bits nor the times of links.
    shell("touch -d @1600000003 out && chmod 1777 out/shared");
    shell("find out -type l -exec touch -h -d @1600000005 {} +");
    EXPECT_EQ(listing("out", conditions), expected) << program;
  }
  shell("7z t a.zip");
}

TEST_F(Metadata, TreesOfOtherProgramsAreUnpacked) {
  makeTree();
  // zip stores it as a drive.
  shell("rm -r in/c: && touch -d @1700000001 in/sub/600");
  const std::string conditions = "-mindepth 1";
  const std::string expected = listing("in", conditions);
  for (const char* const program : {"zip -qry ../a.zip .", "bsdtar --format zip -cf ../a.zip ."}) {
    shell("chmod -Rf u+w out; rm -rf out a.zip && cd in && " + std::string(program));
    EXPECT_TRUE(unpack()) << program;
    EXPECT_EQ(listing("out", conditions), expected) << program;
  }
}

TEST_F(Metadata, OptionsLeaveThingsOut) {
  makeTree();
  shell("chmod 6755 in/sub/755");
  const auto pack = [&](const Options& options) {
    EXPECT_TRUE(packFolder(in_.c_str(), path_.c_str(), options));
    return openArchive().entries();
  };
  const auto find = [](const std::vector<Entry>& entries, const std::string& name) {
    for (const Entry& entry : entries) {
      if (entry.name == name) return entry;
    }
    return Entry();
  };
  std::vector<Entry> entries = pack(Options().setPermissions(false).setTimes(false));
  EXPECT_EQ(find(entries, "sub\\600").mode, 0U);
  EXPECT_FALSE(find(entries, "sub\\600").hasUtc);
  EXPECT_TRUE(find(entries, "relative").isLink);
  shell("rm in/dangling in/loop in/absolute in/sub/escaping");
  entries = pack(Options().setLinks(false).setFolders(false));
  EXPECT_EQ(find(entries, "relative").mode, 0100755U);
  EXPECT_EQ(find(entries, "empty\\").name, "");
  entries = pack(Options().setSetId(true));
  EXPECT_EQ(find(entries, "sub\\755").mode, 0106755U);

  const mode_t mask = umask(022);
  EXPECT_TRUE(unpack(Options().setPermissions(false).setTimes(false)));
  EXPECT_EQ(modeOf(out_ + "/sub/600"), 0644U);
  EXPECT_EQ(modeOf(out_ + "/private"), 0755U);
  EXPECT_EQ(output("find out ! -type d ! -newer a.zip"), "");
  umask(mask);
  shell("rm -r out");
  EXPECT_TRUE(unpack());
  EXPECT_EQ(modeOf(out_ + "/sub/755"), 0755U);
  shell("chmod -R u+w out; rm -r out");
  EXPECT_TRUE(unpack(Options().setSetId(true)));
  EXPECT_EQ(modeOf(out_ + "/sub/755"), 06755U);
  shell("chmod -R u+w out; rm -r out");
  const Report report = unpack(Options().setLinks(false));
  EXPECT_EQ(reasonsOf(report)["relative"], Reason::IsALink);
  EXPECT_FALSE(std::filesystem::exists(out_ + "/relative"));
  const Archive archive = openArchive();
  const std::string link = folder_.file("link");
  const Entry relative = find(archive.entries(), "relative");
  EXPECT_EQ(archive.extract(relative, link.c_str(), Options().setLinks(false)), Reason::IsALink);
  EXPECT_FALSE(std::filesystem::is_symlink(link));
}

// Each entry alone, in a folder that has a file, a folder and a link.
TEST_F(Metadata, HostileEntries) {
  const struct {
    const char* entries;
    Reason reason;       // of the last entry
    const char* result;  // of a command in the target afterwards
    const char* command;
  } kRows[] = {
      {"add('l', b'../outside', 0o120777); add('l/through', b'x')", Reason::IsAFolder, "", "true"},
      {"add('file', b'../outside', 0o120777)", Reason::None, "../outside", "readlink file"},
      {"add('link', b'elsewhere', 0o120777)", Reason::None, "elsewhere", "readlink link"},
      {"add('link', b'new')", Reason::None, "new", "test ! -L link && cat link"},
      {"add('folder', b'../outside', 0o120777)", Reason::IsAFolder, "folder", "echo folder"},
      {"add('link/x', b'x')", Reason::NotAFolder, "", "ls ../outside"},
      {"add('link/', b'', 0o40700)", Reason::NotAFolder, "755", "stat -c %a ../outside"},
      {"add('x', b'', 0o120777)", Reason::Damaged, "", "ls -d x"},
      {"add('x', b'a\\0b', 0o120777)", Reason::Damaged, "", "ls -d x"},
      {"add('x', b'a' * 4096, 0o120777)", Reason::PathTooLong, "", "ls -d x"},
      // NTFS has no longer ones.
      {"add('x', b'a' * 4000, 0o120777)", Reason::None, "x", "ls -d x"},
      {"add('x', b'', 0o20666)", Reason::NotAFile, "", "ls -d x"},
      {"add('x', b'', 0o140666)", Reason::NotAFile, "", "ls -d x"},
      {"add('-', b'piped', 0o10600)", Reason::None, "600 piped",
       "find . -name - -type f -printf '%m ' "
       "-exec cat {} +"},
      {"add('x', b'', 0o106777)", Reason::None, "777", "stat -c %a x"},
      {"add('x', b'', 0o100000)", Reason::None, "0", "stat -c %a x"},
      {"add('x/', b'', 0o42000); add('x/y', b'y')", Reason::None, "0 y",
       "echo $(stat -c %a x) && chmod 700 x && cat x/y"},
      {"add('folder/', b'', 0o40777)", Reason::None, "700", "stat -c %a folder"},
      {"add('x', b'', 0o100644, b'', 0xff)", Reason::None, "x", "find x -type f"},
      {"add('C:\\\\x', b'x')", Reason::NameEscapes, "", "ls -d C* ../C*"},
      {"add('c:x', b'x')", Reason::None, "x", "cat c:x"},
      {"add('c:', b'x')", Reason::None, "x", "cat c:"},
      {"add('c:', b'x', 0o120777)", Reason::None, "x", "readlink c:"},
      {"add('x', b'', 0o100644, struct.pack('<HHBi', 0x5455, 5, 1, -2**31))", Reason::None,
       "-2147483648", "stat -c %Y x"},
      {"add('x', b'', 0o100644, struct.pack('<HHBiii', 0x5455, 13, 7, 3, 1, 2))", Reason::None, "3",
       "stat -c %Y x"},
      {"add('x', b'', 0o100644, struct.pack('<HHB', 0x5455, 1, 1))", Reason::None,
       "1980-01-01 00:00", "date -r x '+%F %H:%M'"},
      {"add('x', b'', 0o100644, struct.pack('<HHii', 0x5855, 8, 1, 5))", Reason::None, "5",
       "stat -c %Y x"},
      {"add('x', b'', 0o100644, struct.pack('<HHIHHQQQ', 10, 32, 0, 1, 24, 116444736070000000, 1, "
       "1))",
       Reason::None, "7", "stat -c %Y x"},
  };
  shell("mkdir outside && chmod 755 outside");
  // An archive of each row, made by one process.
  std::string script = "import os\n";
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    script += std::string(kRows[i].entries) + "\nz.close(); os.rename('a.zip', '" +
              std::to_string(i) + ".zip'); z = zipfile.ZipFile('a.zip', 'w')\n";
  }
  makeEntries(script);
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    const auto& row = kRows[i];
    SCOPED_TRACE(row.entries);
    shell(
        "rm -rf out && mkdir -p out/folder && chmod 700 out/folder && printf old >out/file && "
        "ln -s ../outside out/link && mv " +
        std::to_string(i) + ".zip a.zip");
    const Report report = unpack();
    ASSERT_FALSE(report.items.empty());
    if (row.reason != Reason::IsAFolder || report.items.size() == 1) {
      EXPECT_EQ(report.items.back().reason, row.reason);
    } else {
      EXPECT_EQ(report.items.front().reason, row.reason);
    }
    const std::string text = output(std::string("cd out && (") + row.command +
                                    ") 2>/dev/null | tr '\\n' ' ' | sed 's/ *$//'");
    EXPECT_EQ(text, row.result);
    EXPECT_EQ(output("ls outside"), "");
  }
}

// Files and links, neither of which is followed.
TEST_F(Metadata, KeepingKeepsWhatAnEntryWouldReplace) {
  shell(R"(mkdir out outside && printf old | tee out/file >outside/file
ln -s nothing out/link; ln -s ../outside/none out/dangling
ln -s ../outside/file out/to-file; ln -s ../outside out/to-folder)");
  const std::string before = listing("out");
  makeEntries(R"(for name in "file", "link": add(name, b"x", 0o120777)
for name in "dangling", "to-file", "to-folder": add(name, b"x"))");
  const Report report = unpack(Options().setExisting(ExistingFiles::Keep));
  EXPECT_EQ(report.items.size(), 5U);
  for (const ItemResult& item : report.items) EXPECT_EQ(item.reason, Reason::Exists) << item.name;
  EXPECT_EQ(listing("out"), before);
  EXPECT_EQ(output("cat out/file; ls outside; cat outside/file"), "oldfile\nold");
}

// A folder that was to have few permissions gets them, whatever became of the files in it.
TEST_F(Metadata, CancellingLeavesNoFolderOpen) {
  makeEntries("add('open/', b'', 0o40500)\nfor i in range(5): add('open/%d' % i, b'x')");
  int calls = 0;
  const Report report = unpack(Options().setProgress([&](const Progress&) { return ++calls < 4; }));
  EXPECT_EQ(report.reason, Reason::Cancelled);
  EXPECT_EQ(modeOf(out_ + "/open"), 0500U);
}

TEST_F(Metadata, InsertionsAndASingleExtraction) {
  makeTree();
  ArchiveChange change;
  change.insertFile(folder_.file("in/sub/600"), "s/f");
  change.insertFolder(folder_.file("in/private"), "s/d");
  change.insertLink(folder_.file("in/dangling"), "s/l");
  ASSERT_TRUE(change.apply(path_.c_str()));
  change.insertFolder(folder_.file("in/dangling"), "x");
  EXPECT_EQ(change.apply(path_.c_str()).reason, Reason::Missing);
  change.insertFolder(folder_.file("in/a:b"), "x");
  EXPECT_EQ(change.apply(path_.c_str()).reason, Reason::NotAFolder);
  change.insertLink(folder_.file("in/sub/600"), "x");
  EXPECT_EQ(change.apply(path_.c_str()).reason, Reason::NotAFile);

  const Archive archive = openArchive();
  ASSERT_EQ(archive.entries().size(), 3U);
  EXPECT_EQ(archive.extract(archive.entries()[0], (out_ + "/f").c_str()), Reason::None);
  EXPECT_EQ(modeOf(out_ + "/f"), 0600U);
  EXPECT_EQ(archive.entries()[1].name, "s/d/");
  EXPECT_EQ(archive.entries()[1].mode, 040700U);
  EXPECT_EQ(archive.extract(archive.entries()[2], (out_ + "/l").c_str()), Reason::None);
  EXPECT_EQ(std::filesystem::read_symlink(out_ + "/l"), "missing");
}

// The times of an archive do not depend on the time zone; those that are stored without one do.
TEST_F(Metadata, TimesInAnotherTimeZone) {
  write("in/x", "x");
  support::setWriteTime(folder_.file("in/x"), 1700000001);
  ASSERT_TRUE(packFolder(in_.c_str(), path_.c_str()));
  const support::TwoHoursEast zone;
  ASSERT_TRUE(unpack());
  EXPECT_EQ(listing("out", "-name x"), "./x f 644 1700000001\n");
  const Archive archive = openArchive();
  const Entry entry = archive.find("x").value();
  EXPECT_EQ(entry.utcSeconds, 1700000001);
  EXPECT_EQ(entry.modified.hour, 0);  // 22:13:21 UTC
  EXPECT_EQ(entry.modified.second, 21);
}

}  // namespace
