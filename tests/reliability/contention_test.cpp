// Several processes and threads on the same files.

#include <filesystem/enumeration.h>
#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/path.h>
#include <filesystem/stream.h>
#include <filesystem/temporary_storage.h>
#include <filesystem/xml.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <list>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/unique_handle.h"
#include "platform/win32.h"
#include "support/linux/forked_process.h"
#include "support/linux/shared_memory.h"
#include "support/temporary_folder.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;
constexpr std::chrono::seconds kPatience{60};

// Shared by parent and children.
struct Board {
  std::atomic<int> readers{0};
  std::atomic<int> writers{0};
  std::atomic<int> violations{0};  // of the share modes
  std::atomic<int> granted{0};
  std::atomic<int> refused{0};
};

class Contention : public testing::TestWithParam<unsigned> {
 protected:
  // Runs `work(number)` in as many processes as the parameter says. False if one of them fails.
  template <typename Work>
  bool inProcesses(Work work) {
    std::list<support::ForkedProcess> processes;
    for (unsigned i = 0; i < GetParam(); ++i) {
      processes.emplace_back([&work, i](const auto&) { return work(i); });
    }
    bool succeeded = true;
    for (support::ForkedProcess& process : processes) {
      succeeded = process.wait() == 0 && succeeded;
    }
    return succeeded;
  }
  void createArchive() {
    ZipArchive archive;
    ASSERT_EQ(archive.create(path_.c_str(), 0), 1);
    ASSERT_EQ(archive.insert({'x'}, "first", "", 0), 1);
  }

  support::TemporaryFolder folder_;
  std::string path_ = folder_.file("a.zip");
};

TEST_P(Contention, HoldersExcludeEachOther) {
  createArchive();
  const support::SharedMemory<Board> board;
  const bool ended = inProcesses([&](unsigned number) {
    std::minstd_rand random(number + 1);
    for (int round = 0; round < 300; ++round) {
      const bool writes = random() % 2 == 0;
      ZipArchive archive;
      if (archive.open(path_.c_str(), writes ? kReadWrite : kRead) == 0) {
        ++board->refused;
        FileSystem::AllowedAccess(path_.c_str());
        continue;
      }
      ++board->granted;
      // A writer excludes everything else; readers exclude writers.
      const int writers = writes ? ++board->writers : board->writers.load();
      const int readers = writes ? board->readers.load() : ++board->readers;
      if (writers > (writes ? 1 : 0) || (writes && readers > 0)) ++board->violations;
      if (random() % 4 == 0) usleep(static_cast<useconds_t>(random() % 200));
      --(writes ? board->writers : board->readers);
    }
    return 0;
  });
  EXPECT_TRUE(ended);
  EXPECT_EQ(board->violations, 0);
  EXPECT_GT(board->granted, 50);
  EXPECT_GT(board->refused, 0);
}

TEST_P(Contention, ProbesBlockNoOpening) {
  createArchive();
  const bool ended = inProcesses([&](unsigned number) {
    constexpr int kRounds = 3000;
    for (int round = 0; round < kRounds; ++round) {
      if (number != 0) {
        FileSystem::IsFileLockedWrite(path_.c_str());
        continue;
      }
      const platform::FileHandle exclusive(CreateFileA(path_.c_str(), GENERIC_READ | GENERIC_WRITE,
                                                       0, nullptr, OPEN_EXISTING, 0, nullptr));
      if (!exclusive || FileSystem::FileExists(path_.c_str()) != 0) return 1;
    }
    return 0;
  });
  EXPECT_TRUE(ended);
}

TEST_P(Contention, NoEntryIsLost) {
  createArchive();
  constexpr int kEntries = 30;
  const auto nameOf = [](unsigned process, int entry) {
    return std::to_string(process) + "-" + std::to_string(entry);
  };
  const bool ended = inProcesses([&](unsigned number) {
    const auto end = Clock::now() + kPatience;
    // A refused process tries again; one of them always succeeds.
    const auto untilDone = [&](auto step) {
      for (; Clock::now() < end; usleep(200)) {
        ZipArchive archive;
        if (archive.open(path_.c_str(), kReadWrite) == 1 && step(archive)) return true;
      }
      return false;
    };
    for (int i = 0; i < kEntries; ++i) {
      const std::string name = nameOf(number, i);
      const std::vector<unsigned char> bytes(name.begin(), name.end());
      if (!untilDone([&](ZipArchive& a) { return a.insert(bytes, name, "", 0) == 1; })) return 1;
      // A third of the entries is removed, and a third is replaced.
      if (i % 3 == 1 && !untilDone([&](ZipArchive& a) { return a.remove(name.c_str()) == 1; })) {
        return 2;
      }
      if (i % 3 == 2 && !untilDone([&](ZipArchive& a) {
            return a.insert({'n', 'e', 'w'}, name, "", 1) == 1;
          })) {
        return 3;
      }
    }
    return 0;
  });
  EXPECT_TRUE(ended);
  std::vector<std::string> expected{"first"};
  for (unsigned process = 0; process < GetParam(); ++process) {
    for (int i = 0; i < kEntries; ++i) {
      if (i % 3 != 1) expected.push_back(nameOf(process, i));
    }
  }
  ZipArchive archive;
  ASSERT_EQ(archive.open(path_.c_str(), kRead), 1);
  std::vector<std::string> names;
  EXPECT_EQ(archive.enumerate(names), 1);
  for (const std::string& name : names) {
    std::vector<unsigned char> bytes;
    EXPECT_EQ(archive.extract(name.c_str(), bytes), 1) << name;
    if (name == "first") continue;
    const bool replaced = std::stoi(name.substr(name.find('-') + 1)) % 3 == 2;
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), replaced ? "new" : name);
  }
  std::sort(expected.begin(), expected.end());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, expected);
  // There is no temporary file.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
}

TEST_P(Contention, ProbingWritingAndDeletingTerminates) {
  const bool ended = inProcesses([&](unsigned number) {
    std::minstd_rand random(number + 1);
    for (int round = 0; round < 200; ++round) {
      const std::string path = folder_.file("file" + std::to_string(random() % 3));
      switch (random() % 4) {
        case 0:
          FileSystem::writeContent(path, "whole");
          break;
        case 1: {
          // Writers permit readers, which may find the beginning only.
          if (!std::string("whole").starts_with(FileSystem::readContent(path))) return 1;
          break;
        }
        case 2:
          FileSystem::TestOpen(path.c_str(), kReadWrite);
          FileSystem::IsFileLockedWrite(path.c_str());
          break;
        default:
          FileSystem::eraseOldFile(folder_.text(), 0);
      }
    }
    return 0;
  });
  EXPECT_TRUE(ended);
}

INSTANTIATE_TEST_SUITE_P(Processes, Contention, testing::Values(2U, 8U));

// Threads that use objects and files of their own.
TEST(Threads, WorkSideBySide) {
  support::TemporaryFolder folder;
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back([&, number] {
      const std::string own = folder.file(std::to_string(number)) + "\\";
      EXPECT_NE(FileSystem::EnsurePathExists(own.c_str()), 0);
      for (int round = 0; round < 6; ++round) {
        const std::string content(5000, static_cast<char>('a' + number));
        EXPECT_TRUE(FileSystem::writeContent(own + "in.txt", content));
        ZipArchive archive;
        EXPECT_EQ(archive.create((own + "a.zip").c_str(), 1), 1);
        archive.password("secret");
        EXPECT_EQ(archive.insert((own + "in.txt").c_str(), "entry", "", 0), 1);
        EXPECT_EQ(archive.insert({content.begin(), content.end()}, "other", "", 0), 1);
        EXPECT_EQ(archive.remove("entry"), 1);
        EXPECT_EQ(archive.extract("other", (own + "out.txt").c_str()), 1);
        archive.close();
        EXPECT_EQ(FileSystem::readContent(own + "out.txt"), content);
        EXPECT_TRUE(FRT_ZIP_FOLDER(own.c_str(), (own + "b.zip").c_str()));
        std::vector<std::string> files;
        EXPECT_EQ(FileSystem::EnumFilesWithPath(files, own.c_str(), "*.t?t", true), 2U);
        FileSystem::TemporaryStorage storage;
        EXPECT_TRUE(storage.create(own, false));
        EXPECT_EQ(FileSystem::CopyContent(own, storage.path()), 4);
        FileSystem::FileStream stream((own + "out.txt").c_str(), FileSystem::FileStream::OpenWrite);
        EXPECT_TRUE(stream.put(FileSystem::Xml::xmlDefine("Tag", content)));
        EXPECT_TRUE(FileSystem::pathEqual(own, own));
        EXPECT_GT(FileSystem::fileTime(own + "in.txt"), 0.0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
