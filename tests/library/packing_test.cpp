// Packing of directories: archives for other programs, and failures that change nothing.

#include "library/reports.h"
#include "library/zip.h"

namespace {

using namespace FileSystem;

class Packing : public Zip {
 protected:
  Reason pack(const Options& options = {}) {
    report_ = packFolder(in_.c_str(), path_.c_str(), options);
    return report_.reason;
  }
  Report report_;
};

TEST_F(Packing, EveryProgramUnpacksTheTree) {
  for (const char* name : {"a", "sub/b", "sub/deeper/c", "Größe/ü", "Größe/é ñ/ß.txt"}) {
    write(support::text(std::string("in/") + name), name);
  }
  if (support::kPlatform.everyName) {
    for (const char* name : {"日本/語", "😀", "Привет/x"}) {
      write(std::string("in/") + name, name);
    }
  }
  const auto unpacksWith = [&](const std::string& program) {
    shell("export LC_ALL=C.UTF-8; rm -rf out && mkdir out && (cd out && " + program +
          ") && diff -r in out");
  };
  EXPECT_EQ(pack(), Reason::None);
  EXPECT_TRUE(report_);
  for (const char* const program :
       {"unzip -qq ../a.zip", "7z x ../a.zip", "bsdtar -xf ../a.zip", "busybox unzip -q ../a.zip",
        "python3 -m zipfile -e ../a.zip ."}) {
    unpacksWith(program);
  }
  // The names of the export have backslashes, which only some programs take for separators.
  ASSERT_TRUE(FRT_ZIP_FOLDER(in_.c_str(), path_.c_str()));
  for (const char* const program :
       {"unzip -qq ../a.zip", "7z x ../a.zip", "bsdtar -xf ../a.zip", "bsdtar -xf - <../a.zip"}) {
    unpacksWith(program);
  }
}

// Callers find what was packed as they find what FRT_ZIP_FOLDER packs.
TEST_F(Packing, EntriesAreShownWithBackslashes) {
  const std::string name = support::text("sub\\größe");
  // The list has the names in the OEM code page.
  const auto isShownWithBackslash = [&] {
    const Names shown = names();
    return shown.size() == 1 && shown[0].starts_with("sub\\gr");
  };
  write(support::text("in/sub/größe"), "content");
  ASSERT_EQ(pack(Options().setFolders(false)), Reason::None);
  EXPECT_TRUE(isShownWithBackslash());
  EXPECT_EQ(output("LC_ALL=C.UTF-8 unzip -Z1 a.zip"), "sub/größe\n");
  EXPECT_EQ(readable().exist(name.c_str()), 1);
  EXPECT_EQ(contentOf(name.c_str()), "content");
  EXPECT_EQ(writable().insert(bytesOf("new"), name, "", 0), 0);
  EXPECT_TRUE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
  shell("diff -r in out");
  // A rewrite keeps the stored names.
  EXPECT_EQ(writable().insert(bytesOf("x"), "x", "", 0), 1);
  EXPECT_EQ(writable().remove("x"), 1);
  EXPECT_TRUE(isShownWithBackslash());
}

TEST_F(Packing, Encrypts) {
  write("in/sub/x", "content");
  ASSERT_EQ(pack(Options().setPassword("secret")), Reason::None);
  EXPECT_EQ(contentOf("sub\\x"), "<nothing>");
  EXPECT_EQ(contentOf("sub\\x", "secret"), "content");
}

TEST_F(Packing, FailureLeavesTheOldArchive) {
  write("in/a", "new");
  write("in/z", "new");
  make({"old"});
  const std::string before = support::readFile(path_);
  {
    const platform::FileHandle held = support::openFile(folder_.file("in/z"));
    EXPECT_EQ(pack(), Reason::InUse);
    EXPECT_EQ(reasonsOf(report_), (Reasons{{"z", Reason::InUse}}));
  }
  {
    const platform::FileHandle held = support::openFile(path_);
    EXPECT_EQ(pack(), Reason::InUse);
    EXPECT_EQ(reasonsOf(report_), Reasons{});
  }
  std::filesystem::rename(in_, in_ + "2");
  EXPECT_EQ(pack(), Reason::Missing);
  EXPECT_EQ(reasonsOf(report_), (Reasons{{"", Reason::Missing}}));
  in_ += "2\\a";
  EXPECT_EQ(pack(), Reason::NotAFolder);
  EXPECT_TRUE(support::readFile(path_) == before);
  path_ = folder_.name();
  EXPECT_EQ(pack(), Reason::IsAFolder);
}

}  // namespace
