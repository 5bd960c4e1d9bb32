// The peak memory of the archive operations, which does not depend on the sizes of the files, and
// that they start no thread.

#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "started_threads.h"
#include "support/linux/peak_memory.h"
#include "support/linux/shared_memory.h"
#include "support/temporary_folder.h"
#include "zip/engine.h"

namespace {

constexpr unsigned int kReadWrite = 0xC0000000;

constexpr std::size_t kMegabyte = 1 << 20;

// In KiB.
constexpr long kInsertLimit = 16 << 10;
constexpr long kFolderLimit = 32 << 10;

// A megabyte of random bytes. It is longer than the window of deflate, so a repetition of it does
// not compress.
std::string randomBlock() {
  std::minstd_rand random(1);
  std::string block(kMegabyte, '\0');
  for (char& c : block) c = static_cast<char>(random() >> 8);
  return block;
}

// 64 of these compress to some 26 MB, nearly the largest entry that is inflated in one piece.
std::string textBlock() {
  std::string block = randomBlock();
  for (char& c : block) c = "0123456789abcdef"[c & 15];
  std::fill_n(block.begin(), block.size() / 4, ' ');
  return block;
}

void writeBlocks(const std::string& path, const std::string& block, int count) {
  std::ofstream out(path, std::ios::binary);
  for (; count > 0; --count) out << block;
  ASSERT_TRUE(out.flush().good()) << path;
}

void writeSparse(const std::string& path, std::uintmax_t megabytes) {
  support::writeFile(path, "");
  std::filesystem::resize_file(path, megabytes * kMegabyte);
}

// Makes the heap that of a program that has run for long. glibc maps large blocks separately, but
// once one was freed, it takes blocks of up to that size (at most 32 MB) from the heap, which then
// keeps up to twice as much free.
void ageHeap() {
  constexpr std::size_t kLargeBlock = std::size_t{31} << 20;
  // Without volatile the compiler would omit both calls.
  void* volatile block = std::malloc(kLargeBlock);
  std::free(block);
}

class MemoryLimits : public testing::Test {
 protected:
  void SetUp() override {
    if (sizeof(VESK_SANITIZE) > 1) GTEST_SKIP() << "a sanitizer takes memory of its own";
    if (!support::peakOf([] { return true; }).measured) {
      GTEST_SKIP() << "the system does not report the peak of resident memory";
    }
  }

  // Runs the work in a process of its own.
  static void expectBelow(long kibibytes, const std::string& name,
                          const std::function<bool()>& work) {
    SCOPED_TRACE(name);
    const support::SharedMemory<int> threads;
    const support::Peak peak = support::peakOf([&] {
      const int before = startedThreads();
      const bool success = work();
      *threads = startedThreads() - before;
      return success;
    });
    std::printf("%-40s %6ld of %6ld KiB\n", name.c_str(), peak.kibibytes, kibibytes);
    EXPECT_TRUE(peak.succeeded);
    EXPECT_LT(peak.kibibytes, kibibytes);
    EXPECT_EQ(*threads, 0);
  }

  support::TemporaryFolder folder_;
  const std::string archive_ = folder_.file("a.zip");
};

class FoldersInMemory : public MemoryLimits {
 protected:
  void expectUnpacking(const std::string& name, long largestMegabytes) {
    expectBelow((largestMegabytes << 10) + kFolderLimit, name,
                [this] { return FRT_UNZIP_FILE(archive_.c_str(), folder_.file("out").c_str()); });
  }
};

TEST_F(FoldersInMemory, HoldTheLargestEntryAndLittleMore) {
  const std::filesystem::path in = folder_.path() / "in";
  std::filesystem::create_directory(in);
  writeBlocks(in / "text", textBlock(), 64);
  writeBlocks(in / "random", randomBlock(), 64);
  for (std::size_t i = 0; i < 3000; ++i) {
    const std::string number = std::to_string(i);
    support::writeFile(in / ("folder" + number.substr(0, 1)) / number, std::string(i, 's'));
  }
  // No file is in memory as a whole while it is packed.
  expectBelow(kFolderLimit, "pack", [&] { return FRT_ZIP_FOLDER(in.c_str(), archive_.c_str()); });
  expectUnpacking("unpack", 64);
}

// The memory of one entry is not large enough for the next one. The heap is a new one, in which
// these blocks are partly mapped separately.
TEST_F(FoldersInMemory, HoldNothingOfFormerEntries) {
  const std::string block = randomBlock();
  ZipArchive archive;
  ASSERT_EQ(archive.create(archive_.c_str(), 0), 1);
  for (const int megabytes : {20, 18, 26}) {
    const std::string source = folder_.file(std::to_string(megabytes));
    writeBlocks(source, block, megabytes);
    ASSERT_EQ(archive.insert(source.c_str(), std::to_string(megabytes).c_str(), "", 0), 1);
  }
  archive.close();
  expectUnpacking("unpack one larger than those before", 26);
}

TEST_F(MemoryLimits, InsertingAFileHoldsLittleOfIt) {
  ageHeap();
  writeBlocks(folder_.file("text"), textBlock(), 64);
  writeBlocks(folder_.file("random"), randomBlock(), 64);
  writeSparse(folder_.file("sparse"), 256);
  struct Insertion {
    const char* source;
    const char* password;
    int overwrite;
  };
  // Each finds the entries of those before.
  constexpr Insertion kInsertions[] = {
      {"text", "", 0},         {"random", "", 0},       {"sparse", "", 0},
      {"random", "secret", 1}, {"sparse", "secret", 1},
  };
  ZipArchive archive;
  ASSERT_EQ(archive.create(archive_.c_str(), 0), 1);
  archive.close();
  for (const Insertion& insertion : kInsertions) {
    const std::string name = std::string(insertion.overwrite != 0 ? "replace " : "insert ") +
                             insertion.source + (*insertion.password != '\0' ? ", encrypted" : "");
    expectBelow(kInsertLimit, name, [&] {
      ZipArchive own;
      own.open(archive_.c_str(), kReadWrite);
      own.password(insertion.password);
      return own.insert(folder_.file(insertion.source).c_str(), insertion.source, "",
                        insertion.overwrite) == 1;
    });
  }
}

// Only the engine's interface can store a large file without compression.
TEST_F(MemoryLimits, StoringAFileHoldsLittleOfIt) {
  ageHeap();
  constexpr int kMegabytes = 256;
  for (const bool encrypted : {false, true}) {
    expectBelow(kInsertLimit, encrypted ? "store, encrypted" : "store", [&] {
      const std::string block(kMegabyte, '\0');
      std::uint32_t crc = 0;
      for (int i = 0; i < kMegabytes; ++i) crc = ZipCrc32(crc, block.data(), kMegabyte);
      ZipWriter* const writer = ZipOpenWriter(archive_.c_str(), ZipModeCreate);
      ZipOpenNewEntry(writer, "stored", nullptr, nullptr, 0, nullptr, 0, nullptr, ZipMethodStored,
                      ZipLevelDefault, 0, -15, 8, 0, encrypted ? "secret" : nullptr, crc);
      for (int i = 0; i < kMegabytes; ++i) ZipWriteEntry(writer, block.data(), kMegabyte);
      return ZipCloseNewEntry(writer) == 0 && ZipCloseWriter(writer, nullptr) == 0;
    });
  }
}

}  // namespace
