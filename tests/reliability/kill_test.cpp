// Processes that are killed during their work, and the files that they leave.

#include <filesystem/files.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/linux/forked_process.h"
#include "support/linux/shared_memory.h"
#include "support/programs.h"
#include "support/temporary_folder.h"

namespace {

using Entries = std::map<std::string, std::string>;

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;

// Starting a process takes long under a sanitizer, which has no influence on what a killed one
// leaves.
constexpr int kPart = sizeof(VESK_SANITIZE) > 1 ? 10 : 1;

std::string contentFor(unsigned seed, std::size_t most) {
  // Longer than the window of deflate, so that a repetition does not compress.
  constexpr std::size_t kBlock = 40000;
  std::minstd_rand random(seed + 1);
  const std::size_t size = random() % most + 1;
  const bool dense = random() % 2 == 0;
  std::string block(std::min(size, kBlock), '\0');
  for (char& c : block) c = static_cast<char>(dense ? random() >> 8 : 'a' + random() % 3);
  std::string text;
  while (text.size() < size) text.append(block, 0, size - text.size());
  return text;
}

// The numbers of steps that a process has begun and completed, for its parent.
struct Progress {
  std::atomic<unsigned> begun{0};
  std::atomic<unsigned> returned{0};
};

// One change of an archive, always the same one for a number.
struct Step {
  std::string name;
  std::string content;  // empty: the entry is removed

  explicit Step(unsigned number) {
    std::minstd_rand random(number + 7);
    name = "folder\\entry" + std::to_string(random() % 8);
    // Sometimes more than is written in one call.
    if (random() % 4 != 0) content = contentFor(number, random() % 60 == 0 ? 5 << 20 : 20000);
  }
  bool apply(ZipArchive& archive) const {
    if (!content.empty()) return archive.insert({content.begin(), content.end()}, name, "", 1) == 1;
    return archive.exist(name.c_str()) == 0 || archive.remove(name.c_str()) == 1;
  }
  void apply(Entries& entries) const {
    if (content.empty()) {
      entries.erase(name);
    } else {
      entries[name] = content;
    }
  }
};

Entries readArchive(const std::string& path) {
  Entries entries;
  ZipArchive archive;
  std::vector<std::string> names;
  if (archive.open(path.c_str(), kRead) == 0 || archive.enumerate(names) == 0) return entries;
  for (const std::string& name : names) {
    std::vector<unsigned char> bytes;
    EXPECT_EQ(archive.extract(name.c_str(), bytes), 1) << name;
    EXPECT_TRUE(entries.emplace(name, std::string(bytes.begin(), bytes.end())).second) << name;
  }
  return entries;
}

// Returns the names in a folder that are not expected. Two kinds of names that a kill can leave are
// removed and counted: that of a copy between the two system calls that put it in place (the next
// copy or the next opening of the archive removes it), and that of the file that tests a folder.
std::vector<std::string> unexpectedNames(const std::filesystem::path& folder,
                                         const Entries& expected, int& transientNames) {
  std::vector<std::string> result;
  for (const auto& item : std::filesystem::directory_iterator(folder)) {
    const std::string name = item.path().filename().string();
    if (expected.count(name) != 0) continue;
    if (name.starts_with(".~copy") || (name.starts_with("~") && name.ends_with(".TMP"))) {
      ++transientNames;
      std::filesystem::remove(item.path());
    } else {
      result.push_back(name);
    }
  }
  return result;
}

class Killed : public testing::Test {
 protected:
  Killed() {
    std::filesystem::create_directory(folder_.path() / "tmp");
    setenv("TMPDIR", folder_.file("tmp").c_str(), 1);
  }
  ~Killed() override { unsetenv("TMPDIR"); }

  // Runs `work` in a process of its own and kills it at a random moment.
  template <typename Work>
  void killWithin(unsigned microseconds, Work work) {
    support::ForkedProcess process([&](const support::ForkedProcess::Channel& channel) {
      channel.reportReady();
      work();
      return 1;
    });
    ASSERT_TRUE(process.awaitReady());
    usleep(static_cast<useconds_t>(random_() % microseconds));
    process.kill();
  }

  support::TemporaryFolder folder_;
  std::minstd_rand random_{1};
};

TEST_F(Killed, ArchiveHasEveryEntryWhoseCallReturned) {
  constexpr int kKills = 300 / kPart;
  const std::filesystem::path home = folder_.path() / "home";
  std::filesystem::create_directory(home);
  std::filesystem::create_directory(folder_.path() / "kept");
  const std::string path = (home / "a.zip").string();
  Entries expected{{"always", "there"}};
  {
    ZipArchive archive;
    ASSERT_EQ(archive.create(path.c_str(), 0), 1);
    ASSERT_EQ(archive.insert({'t', 'h', 'e', 'r', 'e'}, "always", "", 0), 1);
  }
  unsigned next = 0;
  unsigned undone = 0;
  unsigned patience = 5000;
  int transientNames = 0;
  std::string seen;
  for (int round = 0; round < kKills; ++round) {
    const support::SharedMemory<Progress> progress;
    killWithin(patience, [&] {
      ZipArchive archive;
      if (archive.open(path.c_str(), kReadWrite) == 0) _exit(2);
      for (unsigned number = next;; ++number) {
        const Step step(number);
        progress->begun = number + 1;
        if (!step.apply(archive)) _exit(3);
        progress->returned = number + 1;
      }
    });
    // A slow machine gets more time, so that every round completes a step.
    patience = progress->returned == 0 ? std::min(2 * patience, 2000000U) : 5000;
    for (; next < progress->returned; ++next) Step(next).apply(expected);
    const Entries found = readArchive(path);
    if (next < progress->begun && found != expected) {
      // The interrupted step was completed.
      Step(next++).apply(expected);
    } else {
      ++undone;
    }
    ASSERT_TRUE(found == expected) << "round " << round << ", step " << next;
    EXPECT_EQ(unexpectedNames(home, {{"a.zip", ""}}, transientNames), std::vector<std::string>());
    const std::string copy = std::to_string(round) + ".zip";
    std::filesystem::copy_file(path, folder_.path() / "kept" / copy);
    seen += copy + " " + std::to_string(found.size()) + "\n";
  }
  EXPECT_GT(next, 0U);
  EXPECT_GT(undone, 0U);
  RecordProperty("steps", static_cast<int>(next));
  EXPECT_EQ(transientNames, 0);
  // Other programs read all these archives.
  EXPECT_EQ(support::outputOf(folder_.path() / "kept",
                              "python3 -c 'import zipfile\n"
                              "for i in range(" +
                                  std::to_string(kKills) +
                                  "):\n"
                                  "  z = zipfile.ZipFile(f\"{i}.zip\")\n"
                                  "  print(f\"{i}.zip\", len(z.namelist()) if z.testzip() is None "
                                  "else \"damaged\")'"),
            seen);
  EXPECT_EQ(support::run(folder_.path() / "kept",
                         "for i in *.zip; do unzip -tqq $i; [ $? -le 1 ] || exit 3; done"),
            0);
}

TEST_F(Killed, PackedFolderShowsWholeFilesOnly) {
  Entries files;
  for (unsigned i = 0; i < 12; ++i) {
    const std::string name = "file" + std::to_string(i);
    files[name] = contentFor(i, 30000);
    support::writeFile(folder_.path() / "in" / name, files[name]);
  }
  std::filesystem::create_directory(folder_.path() / "out");
  const std::string paths[] = {folder_.file("out/0.zip"), folder_.file("out/1.zip")};
  for (const std::string& path : paths) {
    ASSERT_TRUE(FRT_ZIP_FOLDER(folder_.file("in").c_str(), path.c_str()));
  }
  std::size_t largest = 0;
  int transientNames = 0;
  for (int round = 0; round < 80 / kPart; ++round) {
    killWithin(20000, [&] {
      for (unsigned i = 0;; ++i) {
        if (!FRT_ZIP_FOLDER(folder_.file("in").c_str(), paths[i % 2].c_str())) _exit(2);
      }
    });
    for (const std::string& path : paths) {
      const Entries found = readArchive(path);
      largest = std::max(largest, found.size());
      for (const auto& [name, content] : found) EXPECT_TRUE(files[name] == content) << name;
    }
    EXPECT_EQ(
        unexpectedNames(folder_.path() / "out", {{"0.zip", ""}, {"1.zip", ""}}, transientNames),
        std::vector<std::string>());
  }
  EXPECT_EQ(largest, files.size());
  EXPECT_EQ(transientNames, 0);
}

TEST_F(Killed, CopiedTargetIsTheOldOrTheNewFile) {
  constexpr unsigned kFiles = 12;
  Entries versions[2];
  for (unsigned version = 0; version < 2; ++version) {
    for (unsigned i = 0; i < kFiles; ++i) {
      const std::string name = "file" + std::to_string(i);
      const std::string content = contentFor(100 * version + i, i % 4 == 0 ? 500000 : 90000);
      versions[version][name] = content;
      support::writeFile(folder_.path() / std::to_string(version) / name, content);
      support::writeFile(folder_.path() / "target" / name, content);
    }
  }
  int transientNames = 0;
  for (int round = 0; round < 120 / kPart; ++round) {
    killWithin(15000, [&] {
      for (unsigned i = 0;; ++i) {
        const std::string source = folder_.file(std::to_string(i % 2)) + "\\";
        if (FileSystem::CopyContent(source, folder_.file("target") + "\\") != kFiles) _exit(2);
      }
    });
    for (const auto& [name, content] : versions[0]) {
      const std::string now = support::readFile(folder_.path() / "target" / name);
      ASSERT_TRUE(now == content || now == versions[1][name]) << "round " << round << ' ' << name;
    }
    EXPECT_EQ(unexpectedNames(folder_.path() / "target", versions[0], transientNames),
              std::vector<std::string>());
  }
  RecordProperty("transient_names", transientNames);
}

}  // namespace
