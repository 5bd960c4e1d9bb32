// Several processes and threads on the same files, some of which are killed during their work.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <list>
#include <locale>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <thread>

#include "failing_calls.h"
#include "library/zip.h"
#include "operations.h"
#include "platform/linux/opening/descriptor.h"
#include "support/linux/forked_process.h"
#include "support/linux/shared_memory.h"
#include "support/linux/temporary_variable.h"
#include "support/noise.h"
#include "support/sanitized.h"

namespace {

using operations::Files;

// One change of an entry, always the same one for a number.
struct Step {
  std::string name;
  std::string content;  // empty: the entry is removed

  Step(unsigned worker, unsigned number) {
    std::minstd_rand random(number + 7);
    name = std::to_string(worker) + "\\entry" + std::to_string(random() % 8);
    if (random() % 4 == 0) return;
    // Sometimes more than is written in one call.
    content = support::noise(random() % (number % 60 == 50 ? 3 << 20 : 20000) + 1, number + 1);
  }
  void apply(Files& entries) const {
    if (content.empty()) {
      entries.erase(name);
    } else {
      entries[name] = content;
    }
  }
  // Tries again while another process has the archive.
  void apply(const std::string& path) const {
    for (bool done = false; !done; usleep(100)) {
      ZipArchive archive;
      if (archive.open(path.c_str(), kReadWrite) == 0) continue;
      done = content.empty() ? archive.remove(name.c_str()) == 1
                             : archive.insert({content.begin(), content.end()}, name, "", 1) == 1;
    }
  }
};

// A process that adds, replaces and removes entries of its own in an archive that others change
// too, and packs the folder "in" into an archive of its own.
class Worker {
 public:
  Worker(unsigned number, const std::string& home)
      : number_(number),
        home_(home),
        pack_(home + "pack" + std::to_string(number) + ".zip"),
        packed_(entriesOf(packFolder())) {}

  // Starts the process. It ends after the step `last`.
  void start(unsigned last) {
    progress_->begun = progress_->returned = next_;
    process_.emplace([this, last](const auto& reportReady) { return work(last, reportReady); });
  }
  // False if the process has ended before it has completed a step.
  bool awaitStep() const { return process_->awaitReady(); }
  void kill() { process_->kill(); }
  int wait() { return process_->wait(); }

  // Checks that the archive has what the calls that returned have left, and the step of an
  // interrupted one as a whole or not at all.
  void check(Files found) {
    std::erase_if(found, [&](const auto& entry) {
      return !entry.first.starts_with(std::to_string(number_) + '\\');
    });
    for (; next_ < progress_->returned; ++next_) Step(number_, next_).apply(entries_);
    if (next_ < progress_->begun && found != entries_) Step(number_, next_++).apply(entries_);
    EXPECT_TRUE(found == entries_) << "worker " << number_ << ", step " << next_;
    EXPECT_TRUE(entriesOf(pack_) == packed_) << "worker " << number_ << ", step " << next_;
  }

 private:
  // The numbers of steps that the process has begun and completed.
  struct Progress {
    std::atomic<unsigned> begun{0};
    std::atomic<unsigned> returned{0};
  };

  const std::string& packFolder() const {
    EXPECT_TRUE(FRT_ZIP_FOLDER((home_ + "in").c_str(), pack_.c_str()));
    return pack_;
  }

  int work(unsigned last, const std::function<void()>& reportReady) {
    for (unsigned number = next_; number != last; ++number) {
      const Step step(number_, number);
      progress_->begun = number + 1;
      if (number % 8 == 0) packFolder();
      if (!step.content.empty() || entries_.count(step.name) != 0) step.apply(home_ + "a.zip");
      step.apply(entries_);
      progress_->returned = number + 1;
      if (number == next_) reportReady();
    }
    return testing::Test::HasFailure() ? 1 : 0;
  }

  unsigned number_;
  std::string home_;
  std::string pack_;
  Files packed_;
  Files entries_;  // of this worker, after the step before `next_`
  unsigned next_ = 0;
  support::SharedMemory<Progress> progress_;
  std::optional<support::ForkedProcess> process_;
};

class Contention : public support::FolderTest {
 protected:
  Contention() {
    for (unsigned i = 0; i < 12; ++i) {
      write("in/" + std::to_string(i), std::string(30000, 'f'));
    }
    std::filesystem::create_directory(folder_.file("tmp"));
    EXPECT_EQ(ZipArchive().create(path_.c_str(), 0), 1);
  }
  void addWorkers(unsigned count) {
    for (unsigned i = 0; i < count; ++i) workers_.emplace_back(i, folder_.file(""));
  }

  // Runs `work(number)` in eight processes. False if one of them fails.
  template <typename Work>
  bool inProcesses(Work work) {
    std::list<support::ForkedProcess> processes;
    for (unsigned i = 0; i < 8; ++i) {
      processes.emplace_back([&work, i](const auto&) { return work(i); });
    }
    return std::all_of(processes.begin(), processes.end(),
                       [](support::ForkedProcess& process) { return process.wait() == 0; });
  }

  support::TemporaryVariable variable_{folder_.file("tmp")};
  std::string path_ = folder_.file("a.zip");
  std::list<Worker> workers_;
};

TEST_F(Contention, NoEntryIsLost) {
  addWorkers(8);
  for (Worker& worker : workers_) worker.start(40);
  for (Worker& worker : workers_) EXPECT_EQ(worker.wait(), 0);
  const Files found = entriesOf(path_);
  for (Worker& worker : workers_) worker.check(found);
}

// Kills each of three processes at a random moment, and starts them again. VESK_KILLS in the
// environment sets the number of kills.
TEST_F(Contention, KilledProcessesLoseNothing) {
  const char* const wanted = std::getenv("VESK_KILLS");
  // Starting a process takes long under a sanitizer.
  const int kills = wanted != nullptr ? std::atoi(wanted) : support::kSanitized ? 30 : 150;
  addWorkers(3);
  std::minstd_rand random(1);
  std::size_t entries = 0;
  for (int killed = 0; killed < kills; killed += 3) {
    for (Worker& worker : workers_) worker.start(UINT_MAX);
    for (Worker& worker : workers_) ASSERT_TRUE(worker.awaitStep());
    for (Worker& worker : workers_) {
      usleep(static_cast<useconds_t>(random() % 10000));
      worker.kill();
    }
    const Files found = entriesOf(path_);
    for (Worker& worker : workers_) worker.check(found);
    ASSERT_FALSE(HasFailure()) << "after " << killed + 3 << " kills";
    entries += found.size();
    write("kept/" + std::to_string(killed) + ".zip", support::readFile(path_));
    // Killed processes leave files in the temporary folder only.
    EXPECT_EQ(folder_.entries(), 4U + workers_.size());
    for (const auto& item : std::filesystem::directory_iterator(folder_.path() / "tmp")) {
      std::filesystem::remove(item.path());
    }
  }
  // Another program reads all these archives.
  EXPECT_EQ(support::outputOf(folder_.path() / "kept", R"(python3 -c '
import glob, zipfile
archives = [zipfile.ZipFile(n) for n in glob.glob("*.zip")]
print(sum(len(z.namelist()) for z in archives if not z.testzip()))')"),
            std::to_string(entries) + "\n");
}

// Another program replaces the archive while it is copied.
TEST_F(Contention, RewriteOverwritesNoNewerVersion) {
  const std::string newer = folder_.file("newer");
  support::writeFile(newer, "another archive");
  ZipArchive archive;
  archive.open(path_.c_str(), kReadWrite);
  ASSERT_EQ(archive.insert({'x'}, "kept", "", 0), 1);
  ASSERT_EQ(archive.insert({'x'}, "removed", "", 0), 1);
  {
    const failing::Failing failing(failing::Fault::Interruption, 1, [&] {
      const bool copies = !std::filesystem::is_empty(folder_.path() / "tmp");
      if (copies && support::exists(newer)) std::filesystem::rename(newer, path_);
    });
    EXPECT_EQ(archive.remove("removed"), 0);
  }
  EXPECT_EQ(support::readFile(path_), "another archive");
}

TEST_F(Contention, ProbesBlockNoOpening) {
  EXPECT_TRUE(inProcesses([&](unsigned number) {
    constexpr int kRounds = 3000;
    for (int round = 0; round < kRounds; ++round) {
      if (number != 0) {
        FileSystem::IsFileLockedWrite(path_.c_str());
        continue;
      }
      const platform::FileHandle exclusive = support::openFile(path_, kReadWrite);
      if (!exclusive || FileSystem::FileExists(path_.c_str()) != 0) return 1;
    }
    return 0;
  }));
}

// Another process has the locks of a writer that is in transit, and withdraws before one of the calls.
TEST_F(Contention, OpeningsThatWithdrawRefuseNoOther) {
  constexpr off_t kFirst = off_t{1} << 62;
  for (int call = 2; call <= 10; ++call) {
    const platform::native::Descriptor other(open(path_.c_str(), O_RDWR | O_CLOEXEC));
    const auto lock = [&](off_t byte, short type) {
      struct flock range {};
      range.l_type = type;
      range.l_whence = SEEK_SET;
      range.l_start = kFirst + byte;
      range.l_len = 1;
      return fcntl(other.get(), F_OFD_SETLK, &range);
    };
    const off_t bytes[] = {2, 6};  // of writers, and of those in transit
    for (const off_t byte : bytes) ASSERT_EQ(lock(byte, F_RDLCK), 0);
    const failing::Failing failing(failing::Fault::Interruption, call, [&] {
      for (const off_t byte : bytes) lock(byte, F_UNLCK);
    });
    EXPECT_TRUE(support::openFile(path_, kReadWrite)) << call;
  }
}

TEST_F(Contention, ProbingWritingAndDeletingTerminates) {
  const std::string path = folder_.file("tmp/file");
  EXPECT_TRUE(inProcesses([&](unsigned) {
    for (int round = 0; round < 100; ++round) {
      FileSystem::writeContent(path, "whole");
      FileSystem::TestOpen(path.c_str(), kReadWrite);
      FileSystem::IsFileLockedWrite(path.c_str());
      // Writers permit readers, which may find the beginning only.
      if (!std::string("whole").starts_with(FileSystem::readContent(path))) return 1;
      FileSystem::eraseOldFile(folder_.file("tmp/"), 0);
    }
    return 0;
  }));
}

// A child that another thread forks inherits what is open at that moment. Here it is forked before
// each call, and calls no exec.
TEST_F(Contention, ForkedChildrenKeepNoFile) {
  const std::set<std::string_view> names{"insert", "unpack", "copy_over_files", "copy_to_new_files",
                                         "lock_file"};
  std::size_t done = 0;
  for (const operations::Operation& operation : operations::all()) {
    if (names.count(operation.name) == 0) continue;
    ++done;
    const std::string own = folder_.file(std::string(operation.name) + '/');
    operations::prepare(own, operation);
    std::list<support::ForkedProcess> children;
    {
      const failing::Failing failing(failing::Fault::Interruption, 1, [&] {
        children.emplace_back([](const auto&) { return pause(); });
      });
      EXPECT_TRUE(operation.run(own)) << operation.name;
    }
    for (const auto& item : std::filesystem::recursive_directory_iterator(own)) {
      if (!item.is_regular_file()) continue;
      EXPECT_TRUE(support::openFile(item.path().string(), kReadWrite))
          << operation.name << ' ' << item.path();
    }
  }
  EXPECT_EQ(done, names.size());
}

// Fills the table in which libstdc++ keeps the characters that it has narrowed. Threads that are the
// first to do so write the same values, which ThreadSanitizer takes for a race.
void narrowAllCharacters() {
  char all[256];
  std::iota(std::begin(all), std::end(all), '\0');
  std::use_facet<std::ctype<char>>(std::locale()).narrow(all, std::end(all), '?', all);
}

// Threads that use objects and files of their own.
TEST_F(Contention, ThreadsDoNotDisturbEachOther) {
  narrowAllCharacters();
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&, number] {
      for (const operations::Operation& operation : operations::all()) {
        const std::string own = folder_.file(std::to_string(number) + operation.name + '/');
        operations::prepare(own, operation);
        EXPECT_TRUE(operation.run(own)) << operation.name;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
