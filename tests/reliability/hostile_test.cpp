// Hostile archives: each one fails as documented, in little time and memory, and nothing is written
// outside the target directory.

#include <algorithm>
#include <cstdio>
#include <ostream>

#include "library/zip.h"
#include "support/linux/left_over.h"
#include "support/linux/peak_memory.h"
#include "support/linux/shared_memory.h"
#include "support/sanitized.h"

namespace {

// The results of a process that works on an archive.
struct Findings {
  std::size_t listed;  // entries that enumerate returns
  std::size_t read;    // entries that can be extracted
  bool appended;       // whether an entry can be added
  bool unpacked;       // result of FRT_UNZIP_FILE; true for a file that is no archive

  bool operator==(const Findings&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Findings& f) {
  return out << f.listed << ' ' << f.read << ' ' << f.appended << ' ' << f.unpacked;
}

// Unpacks with permissions, times and links.
void unpackEntries(const std::string& path, const std::string& folder) {
  FileSystem::Archive archive;
  if (archive.open(path.c_str()) != FileSystem::Reason::None) return;
  std::vector<FileSystem::Entry> entries = archive.entries();
  entries.resize(std::min<std::size_t>(entries.size(), 1000));
  archive.unpack(entries, folder.c_str());
}

Findings workOn(const std::string& path, const std::string& folder) {
  Findings findings{};
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
  archive.close();
  unpackEntries(path, folder + "target");
  return findings;
}

// What a process that works on an archive reports.
struct Report {
  Findings findings;
  bool leftOpen;
  double seconds;  // of processor time, which does not depend on other programs
};

Report reportOf(const std::string& path, const std::string& folder) {
  Report report{};
  const auto descriptors = support::openDescriptors();
  report.findings = workOn(path, folder);
  report.leftOpen = support::openDescriptors() != descriptors;
  report.seconds = static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
  return report;
}

TEST(Hostile, ArchivesGetTheirFailureValueSoonAndInLittleMemory) {
  support::TemporaryFolder folder;
  std::filesystem::create_directory(folder.path() / "in");
  ASSERT_EQ(support::run(folder.path() / "in",
                         "python3 '" VESK_RELIABILITY "/make-hostile-archives' >../archives"),
            0);
  std::ifstream archives(folder.file("archives"));
  std::string name;
  Findings expected{};
  while (archives >> name >> expected.listed >> expected.read >> expected.appended >>
         expected.unpacked) {
    SCOPED_TRACE(name);
    const std::string path = folder.file("in/" + name + ".zip");
    const auto size = std::filesystem::file_size(path);
    // The target has a link to another directory, and a file where a directory is needed.
    const std::filesystem::path target = folder.path() / "home/deep/target";
    std::filesystem::remove_all(folder.path() / "home");
    support::writeFile(target / "file", "a file");
    std::filesystem::create_directory(folder.path() / "home/outside");
    std::filesystem::create_directory_symlink("../../outside", target / "link");

    const support::SharedMemory<Report> report;
    const support::Peak peak = support::peakOf([&] {
      *report = reportOf(path, folder.file("home/deep/"));
      return true;
    });
    EXPECT_EQ(report->findings, expected);
    EXPECT_FALSE(report->leftOpen);
    EXPECT_EQ(support::outputOf(folder.path(),
                                "find home -path home/deep/target -prune -o -print"
                                " | sort"),
              "home\nhome/deep\nhome/outside\n");
    EXPECT_FALSE(std::filesystem::exists("/tmp/vesk-climbed"));
    EXPECT_EQ(
        support::outputOf(folder.path(), "find home -perm /6000 -o ! -type f ! -type d ! -type l"),
        "");
    std::printf("%-30s %8zu bytes  %6.3f s  %6ld KiB\n", name.c_str(),
                static_cast<std::size_t>(size), report->seconds, peak.kibibytes);
    // A sanitizer or valgrind needs more.
    if (support::kSanitized || !peak.measured) continue;
    const bool small = size < 200000;
    EXPECT_LT(report->seconds, small ? 5.0 : 60.0);
    EXPECT_LT(peak.kibibytes, (small ? 64 << 10 : 512 << 10));
  }
  EXPECT_EQ(name, "encrypted-strong") << "is the last archive";
}

}  // namespace
