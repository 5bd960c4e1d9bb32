// Hostile archives: each one fails as documented, in little time and memory, and nothing is written
// outside the target directory.

#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "support/linux/left_over.h"
#include "support/linux/valgrind.h"
#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;

enum class Is { Refused, Kept };

struct Hostile {
  const char* archive;
  std::size_t listed;  // entries that enumerate returns
  std::size_t read;    // entries that can be extracted
  Is appended;         // whether an entry can be added
  bool unpacked;       // result of FRT_UNZIP_FILE; true for a file that is no archive
};

constexpr Hostile kArchives[] = {
    {"climbs", 5, 5, Is::Kept, false},
    {"absolute", 6, 6, Is::Kept, false},
    {"links", 2, 2, Is::Kept, false},
    {"file-for-folder", 1, 1, Is::Kept, false},
    {"quotes", 6, 6, Is::Kept, true},
    {"zero-in-name", 1, 0, Is::Kept, false},
    {"empty-name", 1, 1, Is::Kept, false},
    {"long-name", 1, 0, Is::Kept, false},
    {"nested", 1, 1, Is::Kept, true},
    {"claims-gigabytes-stored", 1, 0, Is::Kept, false},
    {"claims-gigabytes-deflated", 1, 0, Is::Kept, false},
    {"claims-packed-gigabytes", 1, 0, Is::Refused, false},
    {"claims-the-most-deflate-reaches", 1, 0, Is::Kept, false},
    {"less-than-it-holds", 1, 0, Is::Kept, false},
    {"wrong-crc", 1, 0, Is::Kept, false},
    {"wrong-crc-of-nothing", 1, 0, Is::Kept, false},
    {"zip64-size", 1, 0, Is::Refused, false},
    {"unknown-method", 1, 0, Is::Kept, false},
    {"many-claim-gigabytes", 700, 0, Is::Refused, false},
    {"count-too-large", 0, 0, Is::Refused, true},
    {"count-too-small", 0, 0, Is::Refused, true},
    {"count-of-exabytes", 0, 0, Is::Refused, true},
    {"count-of-none", 0, 0, Is::Refused, true},
    {"count-wraps", 0, 0, Is::Refused, true},
    {"directory-too-large", 0, 0, Is::Refused, true},
    {"directory-outside", 0, 0, Is::Refused, true},
    {"entry-outside", 1, 0, Is::Refused, false},
    {"overlap-same", 200, 0, Is::Kept, false},
    {"overlap-nested", 1000, 0, Is::Kept, false},
    {"over-the-directory", 1, 0, Is::Refused, false},
    {"comment-past-the-end", 1, 1, Is::Kept, true},
    {"after-another-archive", 1, 1, Is::Kept, true},
    {"after-a-short-prefix", 1, 1, Is::Kept, true},
    {"offset-of-inner-directory", 0, 0, Is::Refused, true},
    {"without-outer-end", 0, 0, Is::Refused, true},
    {"without-outer-end-prefixed", 0, 0, Is::Refused, true},
    {"without-outer-end-deflated", 0, 0, Is::Refused, true},
    {"without-outer-end-program", 0, 0, Is::Refused, true},
    {"comment-of-end-records", 0, 0, Is::Refused, true},
    {"comment-of-lying-ends", 0, 0, Is::Refused, true},
    {"only-end-records", 0, 0, Is::Refused, true},
    {"signatures", 0, 0, Is::Refused, true},
    {"million", 1000000, 0, Is::Refused, false},
    {"many-of-one-name", 200000, 0, Is::Refused, false},
    {"encrypted-short", 1, 0, Is::Kept, false},
    {"encrypted-header", 1, 0, Is::Kept, false},
    {"encrypted-false-size", 1, 0, Is::Kept, false},
    {"encrypted-strong", 1, 0, Is::Kept, false},
};

// The results of a process that works on an archive.
struct Findings {
  std::size_t listed = 0;
  std::size_t read = 0;
  bool appended = false;
  bool unpacked = false;
  bool leftOpen = false;  // whether other descriptors are open than before
};

Findings workOn(const std::string& path, const std::string& folder) {
  Findings findings;
  {
    ZipArchive archive;
    std::vector<std::string> names;
    archive.open(path.c_str(), kRead);
    archive.password("secret");
    archive.enumerate(names);
    findings.listed = names.size();
    // Each call reads the whole list of entries, so of a million one will do.
    names.resize(std::min<std::size_t>(names.size(), names.size() > 1000 ? 1 : 8));
    for (const std::string& name : names) {
      std::vector<unsigned char> bytes;
      findings.read += static_cast<std::size_t>(archive.extract(name.c_str(), bytes));
    }
    archive.extract(names, (folder + "target/").c_str());
  }
  findings.unpacked = FRT_UNZIP_FILE(path.c_str(), (folder + "target").c_str());
  ZipArchive archive;
  archive.open(path.c_str(), kReadWrite);
  findings.appended = archive.insert({'x'}, "added", "", 0) == 1;
  return findings;
}

// Processor time, which does not depend on other programs, and the largest resident memory.
struct Cost {
  double seconds = 0;
  long kibibytes = 0;
};

// Runs `workOn` in a process of its own.
Findings measured(const std::string& path, const std::string& folder, Cost& cost) {
  Findings findings;
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t process = fork();
  if (process == 0) {
    const auto descriptors = support::openDescriptors();
    findings = workOn(path, folder);
    findings.leftOpen = support::openDescriptors() != descriptors;
    _exit(write(ends[1], &findings, sizeof(findings)) == sizeof(findings) ? 0 : 1);
  }
  close(ends[1]);
  EXPECT_EQ(read(ends[0], &findings, sizeof(findings)), static_cast<ssize_t>(sizeof(findings)));
  close(ends[0]);
  int status = 0;
  rusage usage{};
  wait4(process, &status, 0, &usage);
  EXPECT_EQ(status, 0);
  for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
    cost.seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  }
  cost.kibibytes = usage.ru_maxrss;
  return findings;
}

TEST(Hostile, ArchivesGetTheirFailureValueSoonAndInLittleMemory) {
  const bool watched = std::strlen(VESK_SANITIZE) != 0 || support::underValgrind();
  support::TemporaryFolder folder;
  std::filesystem::create_directory(folder.path() / "in");
  ASSERT_EQ(
      support::run(folder.path() / "in", "python3 '" VESK_RELIABILITY "/make-hostile-archives'"),
      0);
  for (const Hostile& hostile : kArchives) {
    SCOPED_TRACE(hostile.archive);
    const std::string path = folder.file("in/" + std::string(hostile.archive) + ".zip");
    const auto size = std::filesystem::file_size(path);
    // The target has a link to another directory, and a file where a directory is needed.
    std::filesystem::remove_all(folder.path() / "home");
    std::filesystem::create_directories(folder.path() / "home" / "outside");
    std::filesystem::create_directories(folder.path() / "home" / "deep" / "target");
    std::filesystem::create_directory_symlink(folder.path() / "home" / "outside",
                                              folder.path() / "home" / "deep" / "target" / "link");
    support::writeFile(folder.path() / "home" / "deep" / "target" / "file", "a file");

    Cost cost;
    const Findings findings = measured(path, folder.file("home/deep/"), cost);
    EXPECT_EQ(findings.listed, hostile.listed);
    EXPECT_EQ(findings.read, hostile.read);
    EXPECT_EQ(findings.appended, hostile.appended == Is::Kept);
    EXPECT_EQ(findings.unpacked, hostile.unpacked);
    EXPECT_FALSE(findings.leftOpen);
    for (const char* outside : {"home/outside", "home/deep", "home"}) {
      for (const auto& item : std::filesystem::directory_iterator(folder.path() / outside)) {
        const std::string name = item.path().filename().string();
        EXPECT_TRUE(name == "outside" || name == "deep" || name == "target") << name;
      }
    }
    EXPECT_FALSE(std::filesystem::exists("/tmp/vesk-climbed"));
    std::printf("%-30s %8zu bytes  %6.3f s  %6ld KiB\n", hostile.archive,
                static_cast<std::size_t>(size), cost.seconds, cost.kibibytes);
    if (watched) continue;  // a sanitizer or valgrind needs more
    const bool small = size < 200000;
    EXPECT_LT(cost.seconds, small ? 1.0 : 60.0);
    EXPECT_LT(cost.kibibytes, (small ? 64 << 10 : 512 << 10));
  }
}

}  // namespace
