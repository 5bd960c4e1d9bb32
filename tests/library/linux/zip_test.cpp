// Archives with links, with temporary files, and on a full disk.

#include <fcntl.h>

#include "library/zip.h"
#include "platform/linux/replacing/version_name.h"
#include "support/linux/forked_process.h"
#include "support/linux/temporary_variable.h"

namespace {

class ZipOnLinux : public Zip {};

TEST_F(ZipOnLinux, ExtractionToTheCurrentDirectory) {
  make({"entry"});
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.path());
  EXPECT_EQ(readable().extract("entry", "C:name"), 1);
  EXPECT_EQ(readable().extract("entry", "other"), 1);
  std::filesystem::current_path(before);
  EXPECT_EQ(read("name"), "entry");
  EXPECT_EQ(read("other"), "entry");
}

// Another process exchanges a directory of the target, and a file in another one, for links all the
// time.
TEST_F(ZipOnLinux, ExtractionFollowsNoLinksThatAreSwappedIn) {
  if (!support::fileSystem().links || !support::fileSystem().exchange)
    GTEST_SKIP() << "no exchange here";
  make({"folder/file", "stable/file"});
  write("outside/file", "untouched");
  write("out/stable/file", "old");
  std::filesystem::create_directory(out_ + "/folder");
  std::filesystem::create_symlink(folder_.file("outside"), folder_.file("folder link"));
  std::filesystem::create_symlink(folder_.file("outside/file"), folder_.file("file link"));
  support::ForkedProcess swapper([&](const auto&) {
    const auto exchange = [](const std::string& a, const std::string& b) {
      return renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
    };
    for (;;) {
      exchange(folder_.file("folder link"), out_ + "/folder");
      exchange(folder_.file("file link"), out_ + "/stable/file");
    }
    return 0;
  });
  for (int round = 0; round < 300; ++round) FRT_UNZIP_FILE(path_.c_str(), out_.c_str());
  swapper.kill();
  EXPECT_EQ(output("ls outside; cat outside/file"), "file\nuntouched");
}

// Temporary files that killed processes left are deleted when they are older than a day and no
// process holds them. Files of other names are kept.
TEST_F(ZipOnLinux, AbandonedTemporaryFilesAreDeleted) {
  const std::string temporary = folder_.file("tmp");
  shell(
      "mkdir tmp && cd tmp && touch -d '23 hours ago' ~zaB1.TMP .~copyb-b1.tmp && "
      "touch -d '25 hours ago' ~zaA1.TMP ~zaFFFF.TMP ~zaC1.TMP ~za.TMP ~za1A.txt ~za1A2B3.TMP "
      "~zaNote.TMP ~za1.2.TMP .~copya-1.tmp .~copyc-1.tmp .~copyabc.tmp "
      ".~copy0123456789abcdef-1-a.tmp .~copy.tmp .~copy-.tmp .~copy-1.tmp .~copye-.tmp "
      ".~copyf-1-1.tmp .~copynote.tmp");
  const platform::FileHandle held = support::openFile(temporary + "/~zaC1.TMP", GENERIC_READ);
  const platform::FileHandle copy = support::openFile(temporary + "/.~copyc-1.tmp", GENERIC_READ);
  ASSERT_TRUE(held && copy);
  {
    const support::TemporaryVariable variable(temporary);
    make({"a", "b"});
    EXPECT_EQ(writable().remove("a"), 1);
  }
  EXPECT_TRUE(FRT_ZIP_FOLDER(out_.c_str(), (temporary + "/new.zip").c_str()));
  EXPECT_EQ(support::outputOf(temporary, "ls -A | LC_ALL=C sort | tr '\\n' ' '"),
            ".~copy-.tmp .~copy-1.tmp .~copy.tmp .~copyb-b1.tmp .~copyc-1.tmp .~copye-.tmp "
            ".~copyf-1-1.tmp .~copynote.tmp new.zip ~za.TMP ~za1.2.TMP ~za1A.txt ~za1A2B3.TMP "
            "~zaB1.TMP ~zaC1.TMP ~zaNote.TMP ");
}

// A list is appended completely or not at all.
TEST_F(ZipOnLinux, ChangeOnAFullDisk) {
  FileSystem::ArchiveChange change;
  for (int i = 0; i < 2000; ++i) change.insertBytes({}, std::string(200, 'n') + std::to_string(i));
  make({"first"});
  const std::string before = support::readFile(path_);
  EXPECT_TRUE(support::withinSize(
      800'000, [&] { return change.apply(path_.c_str()).reason == FileSystem::Reason::DiskFull; }));
  EXPECT_TRUE(support::readFile(path_) == before);
}

// A process that is killed while it replaces an archive can leave the new version beside it.
TEST_F(ZipOnLinux, OpeningRemovesAnUnfinishedVersion) {
  make({});
  const std::string name = platform::native::versionNameFor("a.zip");
  const std::string other = platform::native::versionNameFor("b.zip");
  write(name, "a new version");
  write(other, "another file's");
  // Without access the file could be one that is being written.
  opened(0);
  EXPECT_TRUE(exists(name));
  readable();
  EXPECT_FALSE(exists(name));
  EXPECT_TRUE(exists(other));
  // It is beside the target of a link.
  write(name, "a new version");
  std::filesystem::create_directory(folder_.file("links"));
  const std::string link = folder_.file("links/c.zip");
  std::filesystem::create_symlink(path_, link);
  ZipArchive archive;
  EXPECT_EQ(archive.open(link.c_str(), GENERIC_READ), 1);
  EXPECT_FALSE(exists(name));
}

}  // namespace
