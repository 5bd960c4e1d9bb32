// Every operation with each of its system calls failing in turn, and on a disk that is full from
// some call on.

#include <algorithm>
#include <csignal>

#include "failing_calls.h"
#include "library/zip.h"
#include "operations.h"
#include "support/linux/forked_process.h"
#include "support/linux/left_over.h"
#include "support/linux/temporary_variable.h"
#include "support/sanitized.h"

namespace {

using failing::Failing;
using failing::Fault;
using operations::contentsOf;
using operations::Files;
using operations::Operation;

// Reports whether each file is as in one of two states, or an archive that has some entries of the
// second one.
bool isBetween(const Files& now, const Files& before, const Files& after) {
  for (const auto& [path, content] : now) {
    const auto old = before.find(path);
    const auto done = after.find(path);
    if (old != before.end() && old->second == content) continue;
    if (done == after.end()) return false;
    const bool isPart = path.ends_with(".zip") && done->second.find(content) != std::string::npos;
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
    // The first run in a directory makes more calls: it looks for abandoned files.
    restoreFiles();
    GetParam().run(work_);
  }

  // Restores the files that the operation works on.
  void restoreFiles() {
    std::filesystem::remove_all(work_);
    std::filesystem::remove_all(temporary_);
    std::filesystem::create_directory(temporary_);
    std::filesystem::copy(model_, work_, std::filesystem::copy_options::recursive);
    // A time in whole units of 100 ns, as one in a hundred is, would need more calls than the others.
    for (const auto& item : std::filesystem::recursive_directory_iterator(work_)) {
      if (item.is_regular_file()) support::setWriteTime(item.path(), std::time(nullptr), 1);
    }
  }

  // Runs the operation without a fault. Returns the number of calls that could have failed.
  int runWhole(Fault fault) {
    restoreFiles();
    const Failing counter(fault, 0);
    EXPECT_TRUE(GetParam().run(work_));
    return counter.count();
  }

  support::TemporaryFolder folder_;
  std::string temporary_ = folder_.file("tmp");
  support::TemporaryVariable variable_{temporary_};
  std::string model_ = folder_.file("model/");
  std::string work_ = folder_.file("work/");
};

// Reports whether a file is left because the call failed that was to delete it.
bool removalFailed(const std::string& call) {
  return call.starts_with("unlink") || call.starts_with("lstat ") || call.starts_with("rmdir ") ||
         ((call.starts_with("openat ") || call.starts_with("fstatat ")) && call.ends_with(".lock"));
}

// Returns the path below the folder of the file whose close failed; empty if another call failed,
// and for an archive, which is committed before it is closed.
std::string closedFile(const std::string& call, const std::string& folder) {
  const std::string beginning = "close " + folder;
  const bool isClose = call.starts_with(beginning) && !call.ends_with(".zip");
  return isClose ? call.substr(beginning.size()) : "";
}

TEST_P(FailingCalls, SucceedOrLeaveAllAsItWas) {
  constexpr std::pair<Fault, const char*> kFaults[] = {{Fault::OneCall, "call "},
                                                       {Fault::FullDisk, "full disk from call "},
                                                       {Fault::HalfRead, "half of read "}};
  const Operation& operation = GetParam();
  restoreFiles();
  const auto beforeBytes = contentsOf(work_, false);
  const auto before = contentsOf(work_, true);
  std::map<Fault, int> total;
  const int threads = failing::startedThreads();
  for (const auto& [fault, name] : kFaults) total[fault] = runWhole(fault);
  const auto after = contentsOf(work_, true);
  EXPECT_GT(total[Fault::OneCall], 3);
  EXPECT_EQ(failing::startedThreads(), threads);

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
      // A file system may report only at the close that it has not stored the file.
      const std::string unstored = closedFile(failed, work_);
      if (after.count(unstored) != 0 && before.count(unstored) == 0) {
        EXPECT_FALSE(success);
        EXPECT_FALSE(std::filesystem::exists(work_ + unstored));
      }
      if (fault == Fault::OneCall && removalFailed(failed)) continue;
      auto now = contentsOf(work_, true);
      if (fault == Fault::OneCall && success) {
        // The call may have been the one that was to delete a temporary file.
        std::erase_if(now, [](const auto& file) { return file.first.ends_with(".TMP"); });
      } else {
        EXPECT_TRUE(std::filesystem::is_empty(temporary_));
      }
      // A storage does not clear a directory that it cannot list.
      if (operation.is(operations::kPassesOver) && success) {
        std::erase_if(now, [](const auto& file) { return file.first.starts_with("{"); });
      }
      if (success && !operation.is(operations::kPassesOver)) {
        EXPECT_TRUE(now == after);
      } else if (operation.is(operations::kInParts)) {
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
  const int total = runWhole(Fault::Interruption);
  const auto after = contentsOf(work_, true);
  if (after == before) return;  // it only reads
  // Starting a process under a sanitizer takes long, so there only some are.
  constexpr int kStep = support::kSanitized ? 10 : 1;
  for (int number = 1; number <= total; number += kStep) {
    restoreFiles();
    support::ForkedProcess process([&](const auto&) {
      const Failing failing(Fault::Interruption, number, [] { raise(SIGKILL); });
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

TEST(FailingCall, ThatWritesOrReadsBackMakesAPathInvalid) {
  const support::TemporaryFolder folder;
  for (const std::string name : {"write ", "read "}) {
    int number = 0;
    std::string failed;
    do {
      const Failing failing(Fault::OneCall, ++number);
      const int isValid = FileSystem::IsValidPath(folder.name().c_str());
      failed = failing.failed();
      if (failed == name) {
        EXPECT_EQ(isValid, 0) << name;
      }
    } while (failed != name && !failed.empty());
    EXPECT_EQ(failed, name);
  }
}

// Network file systems report a full disk there. The new archive of a removal is first written to
// the folder for temporary files.
TEST(FailingCall, ThatClosesANewArchiveIsReported) {
  const support::TemporaryFolder folder;
  const support::TemporaryVariable variable{folder.file("")};
  operations::prepare(folder.file("model/"), {});
  bool isReported = false;
  std::string failed;
  for (int number = 1; number == 1 || !failed.empty(); ++number) {
    std::filesystem::copy(folder.file("model/a.zip"), folder.file("a.zip"),
                          std::filesystem::copy_options::overwrite_existing);
    ZipArchive archive;
    archive.open(folder.file("a.zip").c_str(), kReadWrite);
    const Failing failing(Fault::OneCall, number);
    const bool isRemoved = archive.remove("kept") == 1;
    failed = failing.failed();
    const bool isOfNewArchive = failed.starts_with("close ") && failed.ends_with(".TMP");
    isReported = isReported || (isOfNewArchive && !isRemoved);
  }
  EXPECT_TRUE(isReported);
}

TEST(FailingCall, AnotherProcessMayCreateTheSameFolder) {
  const support::TemporaryFolder folder;
  int total = 0;
  for (int number = 1; number <= total + 1; ++number) {
    std::filesystem::remove_all(folder.file("a"));
    const Failing failing(Fault::Interruption, number,
                          [&] { std::filesystem::create_directory(folder.file("a")); });
    EXPECT_EQ(FileSystem::EnsurePathExists(folder.file("a\\b").c_str()), 1) << number;
    total = failing.count();
  }
}

// Network file systems report a full disk there, or else at the close. The file that a dangling link
// refers to is written in place.
TEST(FailingCall, ThatCommitsAnArchiveWrittenInPlaceIsReported) {
  const support::TemporaryFolder folder;
  support::writeFile(folder.file("in/file"), "content");
  std::filesystem::create_symlink(folder.file("target"), folder.file("link"));
  int number = 0;
  std::string failed;
  bool isPacked = false;
  do {
    std::filesystem::remove(folder.file("target"));
    const Failing failing(Fault::OneCall, ++number);
    isPacked = FRT_ZIP_FOLDER(folder.file("in").c_str(), folder.file("link").c_str());
    failed = failing.failed();
  } while (failed != "fdatasync " && !failed.empty());
  EXPECT_EQ(failed, "fdatasync ");
  EXPECT_FALSE(isPacked);
}

INSTANTIATE_TEST_SUITE_P(All, FailingCalls, testing::ValuesIn(operations::all()),
                         testing::PrintToStringParamName());

}  // namespace
