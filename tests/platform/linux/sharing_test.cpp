// Share modes between processes, and between threads that open a file at the same instant.

#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

#include "support/folder_test.h"
#include "support/linux/forked_process.h"
#include "support/open_file.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Forks where the kernel empties no memory in the child, as before Linux 4.14.
pid_t forkKeepingMemory() {
  std::vector<std::pair<void*, std::size_t>> emptied;
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
  std::ifstream maps("/proc/self/smaps");
  for (std::string line; std::getline(maps, line);) {
    char dash = 0;
    if (line.find(':') > line.find('-')) {
      std::istringstream(line) >> std::hex >> begin >> dash >> end;
    } else if (line.starts_with("VmFlags:") && line.find(" wf") != std::string::npos) {
      emptied.emplace_back(reinterpret_cast<void*>(begin), end - begin);
    }
  }
  for (const auto& [memory, size] : emptied) madvise(memory, size, MADV_KEEPONFORK);
  const pid_t child = fork();
  for (const auto& [memory, size] : emptied) madvise(memory, size, MADV_WIPEONFORK);
  return child;
}

// Ways to make a child process. Two run no handler of pthread_atfork.
struct Forking {
  const char* name;
  std::function<pid_t()> fork;
};
const Forking kForkings[] = {
    {"fork", [] { return fork(); }},
    {"fork that keeps memory", forkKeepingMemory},
    {"_Fork", [] { return _Fork(); }},
    {"clone", [] { return static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }},
};

class Sharing : public support::FolderTest {
 protected:
  void SetUp() override { support::writeFile(path_, "content"); }

  std::string path_ = folder_.file("file");
};

TEST_F(Sharing, HoldsBetweenProcessesAndDiesWithItsHolder) {
  support::ForkedProcess other([&](const auto& reportReady) {
    const platform::FileHandle held = support::openFile(path_, kReadWrite);
    if (held) reportReady();
    pause();
    return 0;
  });
  ASSERT_TRUE(other.awaitReady());
  EXPECT_FALSE(support::openFile(path_, GENERIC_READ, kShareAll));
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_FALSE(DeleteFileA(path_.c_str()));
  other.kill();
  EXPECT_TRUE(support::openFile(path_, kReadWrite));
  EXPECT_TRUE(DeleteFileA(path_.c_str()));
}

TEST_F(Sharing, OneOfTwoContendersWins) {
  constexpr int kRounds = 300;
  for (int round = 0; round < kRounds; ++round) {
    std::atomic<int> waiting{2};
    std::atomic<int> finished{0};
    int winners[2] = {0, 0};
    const auto contend = [&](int index, DWORD share) {
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      const platform::FileHandle file = support::openFile(path_, GENERIC_READ, share);
      winners[index] = file ? 1 : 0;
      // Kept open until both have tried.
      ++finished;
      while (finished != 2) std::this_thread::yield();
    };
    std::thread first(contend, 0, 0);
    contend(1, round % 2 == 0 ? 0 : kShareAll);
    first.join();
    ASSERT_EQ(winners[0] + winners[1], 1) << round;
  }
}

TEST_F(Sharing, ChildThatClosesItsCopyLeavesItsParentTheLock) {
  for (const Forking& forking : kForkings) {
    const platform::FileHandle file = support::openFile(path_, kReadWrite);
    const pid_t child = forking.fork();
    if (child == 0) _exit(CloseHandle(file.get()) ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << forking.name;
    EXPECT_FALSE(support::openFile(path_)) << forking.name;
  }
}

TEST_F(Sharing, ChildOwnsTheLocksThatItTakes) {
  for (const Forking& forking : kForkings) {
    const platform::FileHandle other = support::openFile(path_, GENERIC_READ, kShareAll);
    const pid_t child = forking.fork();
    if (child == 0) {
      platform::FileHandle own = support::openFile(folder_.file("own"), kReadWrite, 0, CREATE_NEW);
      support::ForkedProcess grandchild([](const auto&) { return pause(); });
      own.reset();
      const bool isFree = static_cast<bool>(support::openFile(folder_.file("own"), kReadWrite));
      grandchild.kill();
      _exit(isFree ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << forking.name;
    std::filesystem::remove(folder_.file("own"));
  }
}

}  // namespace
