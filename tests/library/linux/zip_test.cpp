// Archives against links, full disks and small memories.

#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "support/linux/forked_process.h"
#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

constexpr unsigned int kRead = GENERIC_READ;

class ZipOnLinux : public testing::Test {
 protected:
  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("a.zip");
  std::string in_ = folder_.file("in");
  std::string out_ = folder_.file("out");
};

// A full disk, played by a limit of the size of files.
TEST_F(ZipOnLinux, FailedExtractionKeepsTheTarget) {
  {
    ZipArchive archive;
    archive.create(path_.c_str(), 0);
    archive.insert(std::vector<unsigned char>(100000, 'x'), "e", "", 0);
  }
  const std::string existing = folder_.file("existing");
  support::writeFile(existing, "old");
  support::ForkedProcess process([&](const auto&) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{50000, 50000};
    setrlimit(RLIMIT_FSIZE, &limit);
    ZipArchive archive;
    archive.open(path_.c_str(), kRead);
    return archive.extract("e", existing.c_str()) +
           archive.extract("e", folder_.file("fresh").c_str());
  });
  EXPECT_EQ(process.wait(), 0);
  EXPECT_EQ(support::readFile(existing), "old");
  EXPECT_FALSE(support::exists(folder_.file("fresh")));
}

// A claim of gigabytes costs no memory that the archive's own size does not
// justify.
TEST_F(ZipOnLinux, LyingSizesAreRefused) {
  {
    ZipArchive archive;
    ASSERT_EQ(archive.create(path_.c_str(), 1), 1);
    const std::string name(100, 'n');
    ASSERT_EQ(archive.insert({name.begin(), name.end()}, name, "", 0), 1);
  }
  std::string bytes = support::readFile(path_);
  const std::size_t record = bytes.rfind("PK\1\2");
  for (const std::size_t field : {record + 20, record + 24}) {
    std::string lying = bytes;
    lying.replace(field, 4, "\xF0\xFF\xFF\x7F", 4);
    support::writeFile(path_, lying);
    support::ForkedProcess process([&](const auto&) {
      const rlimit limit{std::size_t{1} << 30, std::size_t{1} << 30};
      setrlimit(RLIMIT_AS, &limit);
      return FRT_UNZIP_FILE(path_.c_str(), out_.c_str()) ? 1 : 0;
    });
    EXPECT_EQ(process.wait(), 0);
  }
}

TEST_F(ZipOnLinux, BackslashesInNamesComeBack) {
  support::writeFile(folder_.file("in/x\\y/back\\slash"), "x");
  EXPECT_TRUE(FRT_ZIP_FOLDER(in_.c_str(), path_.c_str()));
  EXPECT_TRUE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
  EXPECT_EQ(support::run(folder_.path(), "diff -r in out"), 0);
}

TEST_F(ZipOnLinux, ExtractionDoesNotGoThroughLinks) {
  support::writeFile(folder_.file("outside/file"), "untouched");
  {
    ZipArchive archive;
    ASSERT_EQ(archive.create(path_.c_str(), 1), 1);
    ASSERT_EQ(archive.insert({'x'}, "link/file", "", 0), 1);
  }
  std::filesystem::create_directory(out_);
  std::filesystem::create_directory_symlink(folder_.file("outside"), out_ + "/link");
  EXPECT_FALSE(FRT_UNZIP_FILE(path_.c_str(), out_.c_str()));
  ZipArchive archive;
  archive.open(path_.c_str(), kRead);
  EXPECT_EQ(archive.extract(std::vector<std::string>{"link/file"}, (out_ + "\\").c_str()), 0);
  EXPECT_EQ(support::readFile(folder_.file("outside/file")), "untouched");
}

// What a process leaves that is killed between naming a rewritten archive and
// putting it in place.
TEST_F(ZipOnLinux, OpeningRemovesAnUnfinishedVersion) {
  ZipArchive archive;
  ASSERT_EQ(archive.create(path_.c_str(), 1), 1);
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  char name[40];
  std::snprintf(name, sizeof(name), ".~copy%llx.tmp",
                static_cast<unsigned long long>(status.st_ino));
  support::writeFile(folder_.file(name), "a new version");
  support::writeFile(folder_.file(".~copy0.tmp"), "another file's");
  ASSERT_EQ(archive.open(path_.c_str(), kRead), 1);
  EXPECT_FALSE(support::exists(folder_.file(name)));
  EXPECT_TRUE(support::exists(folder_.file(".~copy0.tmp")));
}

}  // namespace
