// Share modes between processes, and between threads that open a file at the same instant.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "support/linux/forked_process.h"
#include "support/open_file.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class Sharing : public testing::Test {
 protected:
  void SetUp() override { support::writeFile(path_, "content"); }

  support::TemporaryFolder folder_;
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

}  // namespace
