// Share modes between handles and between processes.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/other_process.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kRead = GENERIC_READ;
constexpr DWORD kWrite = GENERIC_WRITE;
constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

platform::FileHandle openExisting(const std::string& path, DWORD access, DWORD share) {
  return platform::FileHandle(
      CreateFileA(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

bool agrees(DWORD access, DWORD share) {
  return ((access & kRead) == 0 || (share & FILE_SHARE_READ) != 0) &&
         ((access & kWrite) == 0 || (share & FILE_SHARE_WRITE) != 0);
}

const support::Work kHold("hold", [](const std::string& path, const support::Channel& channel) {
  const platform::FileHandle held = openExisting(path, kReadWrite, 0);
  if (held) channel.reportReady();
  std::this_thread::sleep_for(std::chrono::hours(1));
  return 0;
});

constexpr int kIncreases = 2000;

// Increases the number in a file, each time opening it for itself alone.
int increase(const std::string& path) {
  for (int done = 0; done < kIncreases;) {
    const platform::FileHandle file = openExisting(path, kReadWrite, 0);
    if (!file) {
      std::this_thread::yield();
      continue;
    }
    std::uint64_t number = 0;
    DWORD count = 0;
    OVERLAPPED start{};
    if (!ReadFile(file.get(), &number, sizeof(number), &count, &start)) return 1;
    ++number;
    start = {};
    if (!WriteFile(file.get(), &number, sizeof(number), &count, &start)) return 2;
    ++done;
  }
  return 0;
}

const support::Work kIncrease("increase", [](const std::string& path, const support::Channel&) {
  return increase(path);
});

class Sharing : public testing::Test {
 protected:
  void SetUp() override { support::writeFile(path_, "content"); }

  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("file");
};

// Every access and share mode against every other one held open.
TEST_F(Sharing, FollowsThePublishedRule) {
  for (const DWORD heldAccess : {kRead, kWrite, kReadWrite}) {
    for (DWORD heldShare = 0; heldShare < 8; ++heldShare) {
      if (!support::exists(path_)) support::writeFile(path_, "content");
      const platform::FileHandle holder = openExisting(path_, heldAccess, heldShare);
      ASSERT_TRUE(holder);
      for (const DWORD access : {kRead, kWrite, kReadWrite}) {
        for (DWORD share = 0; share < 8; ++share) {
          const bool granted = static_cast<bool>(openExisting(path_, access, share));
          const DWORD error = granted ? DWORD{ERROR_SUCCESS} : GetLastError();
          const bool expected = agrees(access, heldShare) && agrees(heldAccess, share);
          EXPECT_EQ(granted, expected)
              << heldAccess << '/' << heldShare << " against " << access << '/' << share;
          EXPECT_EQ(error, expected ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION);
        }
      }
      EXPECT_EQ(DeleteFileA(path_.c_str()) != FALSE, (heldShare & FILE_SHARE_DELETE) != 0);
    }
  }
}

TEST_F(Sharing, HoldsBetweenProcessesAndDiesWithItsHolder) {
  support::OtherProcess other(kHold, path_);
  ASSERT_TRUE(other.awaitReady());
  EXPECT_FALSE(openExisting(path_, kRead, FILE_SHARE_READ | FILE_SHARE_WRITE));
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_FALSE(DeleteFileA(path_.c_str()));
  other.kill();
  EXPECT_TRUE(openExisting(path_, kReadWrite, 0));
  EXPECT_TRUE(DeleteFileA(path_.c_str()));
}

// A refused opening with CREATE_ALWAYS must not have emptied the file.
TEST_F(Sharing, RefusalChangesNothing) {
  const platform::FileHandle holder = openExisting(path_, kRead, FILE_SHARE_READ);
  const platform::FileHandle refused(
      CreateFileA(path_.c_str(), kWrite, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr));
  EXPECT_FALSE(refused);
  EXPECT_EQ(support::readFile(path_), "content");
}

// Two processes open exclusively, increase a number and close, over and over. A
// moment of two holders would lose an increase; that both lose would show as a
// run of attempts without progress.
TEST_F(Sharing, ExclusiveHoldersNeverOverlap) {
  support::writeFile(path_, std::string(8, '\0'));
  support::OtherProcess other(kIncrease, path_);
  EXPECT_EQ(increase(path_), 0);
  EXPECT_EQ(other.wait(), 0);
  std::uint64_t number = 0;
  support::readFile(path_).copy(reinterpret_cast<char*>(&number), sizeof(number));
  EXPECT_EQ(number, 2U * kIncreases);
}

// Two openings that contradict each other start at the same instant. One of them
// gets the file.
TEST_F(Sharing, OneOfTwoContendersWins) {
  constexpr int kRounds = 300;
  for (int round = 0; round < kRounds; ++round) {
    std::atomic<int> waiting{2};
    std::atomic<int> finished{0};
    int winners[2] = {0, 0};
    const auto contend = [&](int index, DWORD share) {
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      const platform::FileHandle file = openExisting(path_, kRead, share);
      winners[index] = file ? 1 : 0;
      // Kept open until both have tried.
      ++finished;
      while (finished != 2) std::this_thread::yield();
    };
    std::thread first(contend, 0, 0);
    contend(1, round % 2 == 0 ? 0 : FILE_SHARE_READ | FILE_SHARE_WRITE);
    first.join();
    ASSERT_EQ(winners[0] + winners[1], 1) << round;
  }
}

}  // namespace
