// Every operation with each of its system calls failing in turn, and on a disk that is full from
// some call on.

#include <filesystem/files.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "failing_calls.h"
#include "operations.h"
#include "started_threads.h"
#include "support/linux/forked_process.h"
#include "support/linux/left_over.h"
#include "support/temporary_folder.h"

namespace {

using failing::Failing;
using failing::Fault;
using operations::contentsOf;
using operations::Files;
using operations::Operation;

constexpr unsigned int kReadWrite = 0xC0000000;

std::set<std::string> linesOf(const std::string& text) {
  std::set<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.insert(line);
  return lines;
}

// Reports whether each file is as in one of two states, or an archive that has some entries of the
// second one.
bool isBetween(const Files& now, const Files& before, const Files& after) {
  for (const auto& [path, content] : now) {
    const auto old = before.find(path);
    const auto done = after.find(path);
    if (old != before.end() && old->second == content) continue;
    if (done == after.end()) return false;
    const std::set<std::string> all = linesOf(done->second);
    const std::set<std::string> some = linesOf(content);
    const bool isPart =
        path.ends_with(".zip") && std::includes(all.begin(), all.end(), some.begin(), some.end());
    if (!isPart && done->second != content) return false;
  }
  return std::all_of(before.begin(), before.end(),
                     [&](const auto& file) { return now.count(file.first) != 0; });
}

class FailingCalls : public testing::TestWithParam<Operation> {
 protected:
  FailingCalls() {
    std::filesystem::create_directory(temporary_);
    std::filesystem::create_directory(model_);
    operations::prepare(model_, GetParam());
    setenv("TMPDIR", temporary_.c_str(), 1);
  }
  ~FailingCalls() override { unsetenv("TMPDIR"); }

  // Deletes the temporary files of a call that succeeded all the same: the system call that failed
  // was one that was to delete them.
  void deleteTemporaryFiles() {
    for (const std::string& folder : {temporary_, work_}) {
      std::vector<std::filesystem::path> found;
      for (const auto& item : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string name = item.path().filename().string();
        if (name.starts_with("~") && name.ends_with(".TMP")) found.push_back(item.path());
      }
      for (const auto& path : found) std::filesystem::remove(path);
    }
  }

  // Restores the files that the operation works on.
  void restoreFiles() {
    std::filesystem::remove_all(work_);
    std::filesystem::copy(model_, work_, std::filesystem::copy_options::recursive);
  }

  support::TemporaryFolder folder_;
  std::string temporary_ = folder_.file("tmp");
  std::string model_ = folder_.file("model/");
  std::string work_ = folder_.file("work/");
};

// Reports whether a file is left because the call failed that was to delete it.
bool removalFailed(const std::string& call) {
  return call.starts_with("unlink") || call.starts_with("lstat ") || call.starts_with("rmdir ") ||
         (call.starts_with("openat ") && call.ends_with(".lock"));
}

TEST_P(FailingCalls, SucceedOrLeaveAllAsItWas) {
  constexpr struct {
    Fault fault;
    const char* name;
  } kFaults[] = {{Fault::OneCall, "call "},
                 {Fault::FullDisk, "full disk from call "},
                 {Fault::HalfRead, "half of read "}};
  const Operation& operation = GetParam();
  restoreFiles();
  const auto beforeBytes = contentsOf(work_, false);
  const auto before = contentsOf(work_, true);
  std::map<Fault, int> total;
  const int threads = startedThreads();
  for (const auto& [fault, name] : kFaults) {
    restoreFiles();
    const Failing counter(fault, 0);
    ASSERT_TRUE(operation.run(work_));
    total[fault] = counter.count();
  }
  const auto after = contentsOf(work_, true);
  EXPECT_GT(total[Fault::OneCall], 3);
  EXPECT_EQ(startedThreads(), threads);

  for (const auto& [fault, name] : kFaults) {
    for (int number = 1; number <= total[fault]; ++number) {
      restoreFiles();
      const auto descriptors = support::openDescriptors();
      bool success = false;
      std::string failed;
      {
        const Failing failing(fault, number);
        success = operation.run(work_);
        failed = failing.failed();
      }
      SCOPED_TRACE(name + std::to_string(number) + ": " + failed +
                   (success ? ", success" : ", failure"));
      EXPECT_EQ(support::openDescriptors(), descriptors);
      if (fault == Fault::OneCall && removalFailed(failed)) {
        deleteTemporaryFiles();
        continue;
      }
      if (fault == Fault::OneCall && success) deleteTemporaryFiles();
      EXPECT_TRUE(std::filesystem::is_empty(temporary_));
      auto now = contentsOf(work_, true);
      // A storage does not clear a directory that it cannot list.
      if (operation.passesOver && success) {
        std::erase_if(now, [](const auto& file) { return file.first.starts_with("{"); });
      }
      if (success && !operation.passesOver) {
        EXPECT_TRUE(now == after);
      } else if (operation.inParts) {
        EXPECT_TRUE(isBetween(now, before, after));
      } else {
        EXPECT_TRUE(now == before);
        if (fault == Fault::OneCall) {
          EXPECT_TRUE(contentsOf(work_, false) == beforeBytes);
        }
      }
    }
  }
}

TEST_P(FailingCalls, KilledBeforeAnyCallLeaveAllWhole) {
  const Operation& operation = GetParam();
  restoreFiles();
  const auto before = contentsOf(work_, true);
  int total = 0;
  {
    const Failing counter(Fault::Kill, 0);
    ASSERT_TRUE(operation.run(work_));
    total = counter.count();
  }
  const auto after = contentsOf(work_, true);
  if (after == before) return;  // it only reads
  // Starting a process under a sanitizer takes long, so there only some are.
  constexpr int kStep = sizeof(VESK_SANITIZE) > 1 ? 10 : 1;
  for (int number = 1; number <= total; number += kStep) {
    restoreFiles();
    support::ForkedProcess process([&](const auto&) {
      const Failing failing(Fault::Kill, number);
      return operation.run(work_) ? 0 : 1;
    });
    EXPECT_EQ(process.wait(), -1) << "call " << number;
    // Files with new names are whole only at the end.
    const auto now = contentsOf(work_, true);
    for (const auto& [path, content] : before) {
      const auto file = now.find(path);
      EXPECT_TRUE(file != now.end() && (file->second == content || file->second == after.at(path)))
          << "call " << number << ' ' << path;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, FailingCalls,
                         testing::ValuesIn(operations::all().begin(), operations::all().end()),
                         operations::testName);

// On a file system of 400 KiB, in a process with mounts of its own. The child returns the line of
// the first promise that does not hold.
TEST(FullDisk, ArchivesAndTargetsStayAsTheyWere) {
  constexpr int kNotAllowed = 255;
  support::TemporaryFolder folder;
  const std::string disk = folder.file("disk/");
  std::filesystem::create_directory(disk);
  support::writeFile(folder.file("in/small"), std::string(200000, 'l'));
  std::string noise(60000, '\0');
  std::minstd_rand random(1);
  for (char& c : noise) c = static_cast<char>(random() >> 8);
  const auto work = [&]() -> int {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "none", MS_REC | MS_PRIVATE, "") != 0 ||
        mount("vesk", disk.c_str(), "tmpfs", 0, "size=400k") != 0) {
      return kNotAllowed;
    }
    const std::string path = disk + "a.zip";
    const std::vector<unsigned char> bytes(noise.begin(), noise.end());
    std::ofstream(disk + "small") << "old";
    ZipArchive archive;
    if (archive.create(path.c_str(), 0) == 0) return __LINE__ % 250;
    int count = 0;
    std::string before;
    for (bool hasSpace = true; hasSpace;) {
      archive.close();
      before = support::readFile(path);
      archive.open(path.c_str(), kReadWrite);
      hasSpace = archive.insert(bytes, std::to_string(count), "", 0) == 1;
      if (hasSpace) ++count;
    }
    archive.close();
    if (count < 3 || support::readFile(path) != before) return __LINE__ % 250;
    archive.open(path.c_str(), kReadWrite);
    // The temporary folder is on the same disk, then on another one.
    for (const std::string& temporary : {disk, folder.text()}) {
      setenv("TMPDIR", temporary.c_str(), 1);
      if (archive.extract("0", (disk + "small").c_str()) != 0) return __LINE__ % 250;
      if (archive.insert(bytes, "0", "", 1) != 0) return __LINE__ % 250;
      if (FileSystem::CopyContent(folder.file("in") + "/", disk) != 0) return __LINE__ % 250;
      if (support::readFile(disk + "small") != "old") return __LINE__ % 250;
    }
    archive.close();
    if (support::readFile(path) != before) return __LINE__ % 250;
    for (const auto& item : std::filesystem::directory_iterator(disk)) {
      const std::string name = item.path().filename().string();
      if (name != "a.zip" && name != "small") return __LINE__ % 250;
    }
    return 0;
  };
  support::ForkedProcess process([&](const auto&) { return work(); });
  const int status = process.wait();
  if (status == kNotAllowed) GTEST_SKIP() << "mounting a file system is not allowed here";
  EXPECT_EQ(status, 0);
}

}  // namespace
