// The peak memory of the archive operations, which does not depend on the sizes of the files, and
// that they start no thread.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "failing_calls.h"
#include "library/executors.h"
#include "library/zip.h"
#include "support/linux/forked_process.h"
#include "support/linux/peak_memory.h"
#include "support/linux/shared_memory.h"
#include "support/noise.h"
#include "support/sanitized.h"

namespace {

using FileSystem::Archive;
using FileSystem::ArchiveChange;
using FileSystem::Options;

constexpr std::size_t kMegabyte = 1 << 20;
constexpr std::uint64_t kMoreThanFourGigabytes = (std::uint64_t{4} << 30) + 5;

// In KiB.
constexpr long kInsertLimit = 16 << 10;
constexpr long kFolderLimit = 32 << 10;

// A megabyte of random bytes. It is longer than the window of deflate, so a repetition of it does
// not compress.
std::string randomBlock() { return support::noise(kMegabyte); }

// 64 of these compress to some 26 MB.
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

// Makes the heap that of a program that has run for long. glibc maps large blocks separately, but
// once one was freed, it takes blocks of up to that size (at most 32 MB) from the heap, which then
// keeps up to twice as much free.
void ageHeap() {
  constexpr std::size_t kLargeBlock = std::size_t{31} << 20;
  // Without volatile the compiler would omit both calls.
  void* volatile block = std::malloc(kLargeBlock);
  std::free(block);
}

class MemoryLimits : public support::FolderTest {
 protected:
  void SetUp() override {
    if (support::kSanitized) GTEST_SKIP() << "a sanitizer takes memory of its own";
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
      const int before = failing::startedThreads();
      const bool success = work();
      *threads = failing::startedThreads() - before;
      return success;
    });
    std::printf("%-40s %6ld of %6ld KiB\n", name.c_str(), peak.kibibytes, kibibytes);
    EXPECT_TRUE(peak.succeeded);
    EXPECT_LT(peak.kibibytes, kibibytes);
    EXPECT_EQ(*threads, 0);
  }

  const std::string archive_ = folder_.file("a.zip");
};

TEST_F(MemoryLimits, FoldersHoldLittleOfTheLargestEntry) {
  const std::filesystem::path in = folder_.path() / "in";
  for (std::size_t i = 0; i < 3000; ++i) {
    support::writeFile(in / std::to_string(i % 9) / std::to_string(i), std::string(i, 's'));
  }
  writeBlocks(in / "text", textBlock(), 64);
  writeBlocks(in / "random", randomBlock(), 64);
  // No file is in memory as a whole while it is packed.
  expectBelow(kFolderLimit, "pack", [&] { return FRT_ZIP_FOLDER(in.c_str(), archive_.c_str()); });
  expectBelow(kInsertLimit, "unpack",
              [&] { return FRT_UNZIP_FILE(archive_.c_str(), folder_.file("out").c_str()); });
}

// With the largest files that a task takes as a whole, and one that is deflated in parts.
TEST_F(MemoryLimits, EachWorkerHoldsLittle) {
  constexpr unsigned int kWorkers = 4;
  const std::filesystem::path in = folder_.path() / "in";
  std::filesystem::create_directory(in);
  for (int i = 0; i < 24; ++i) writeBlocks(in / std::to_string(i), textBlock(), 4);
  for (int i = 0; i < 24; ++i) writeBlocks(in / ('r' + std::to_string(i)), randomBlock(), 4);
  writeBlocks(in / "text", textBlock(), 64);
  writeBlocks(in / "random", randomBlock(), 64);
  // Another worker does all the work of each call.
  std::size_t calls = 0;
  const auto runOne = [&](const std::vector<FileSystem::Task>& tasks) {
    tasks[calls++ % tasks.size()]();
  };
  const std::pair<const char*, FileSystem::Executor> rows[] = {{"threads", runOnThreads},
                                                               {"one in turn", runOne}};
  for (const auto& [name, executor] : rows) {
    const support::Peak peak = support::peakOf([&, &run = executor] {
      const Options options = Options().setExecutor(run, kWorkers);
      return static_cast<bool>(FileSystem::packFolder(in.c_str(), archive_.c_str(), options));
    });
    std::printf("%-40s %6ld of %6ld KiB\n", name, peak.kibibytes, kWorkers * kFolderLimit);
    EXPECT_TRUE(peak.succeeded);
    EXPECT_LT(peak.kibibytes, kWorkers * kFolderLimit);
  }
}

TEST_F(MemoryLimits, InsertingAFileHoldsLittleOfIt) {
  ageHeap();
  writeBlocks(folder_.file("text"), textBlock(), 64);
  writeBlocks(folder_.file("random"), randomBlock(), 64);
  write("sparse", "");
  std::filesystem::resize_file(folder_.file("sparse"), 256 * kMegabyte);
  // Each finds the entries of those before. The second time, with a password, the source
  // replaces its entry.
  const std::pair<std::string, const char*> insertions[] = {
      {"text", ""}, {"random", ""}, {"sparse", ""}, {"random", "secret"}, {"sparse", "secret"}};
  ASSERT_EQ(ZipArchive().create(archive_.c_str(), 0), 1);
  for (const auto& insertion : insertions) {
    const std::string& source = insertion.first;
    expectBelow(kInsertLimit, "insert " + source + ' ' + insertion.second, [&] {
      ZipArchive own;
      own.open(archive_.c_str(), kReadWrite);
      own.password(insertion.second);
      return own.insert(folder_.file(source).c_str(), source.c_str(), "", 1) == 1;
    });
  }
}

// Those in files hold none of the content, those in memory only that.
TEST_F(MemoryLimits, ExtractionHoldsLittleOfALargeEntry) {
  writeBlocks(folder_.file("text"), textBlock(), 64);
  writeBlocks(folder_.file("largest in one piece"), textBlock(), 4);
  write("zeros", "");
  std::filesystem::resize_file(folder_.file("zeros"), 700 * kMegabyte);
  for (const char* const password : {"", "secret"}) {
    for (const std::string name : {"text", "largest in one piece", "zeros"}) {
      ZipArchive archive;
      ASSERT_EQ(archive.create(archive_.c_str(), 1), 1);
      archive.password(password);
      ASSERT_EQ(archive.insert(folder_.file(name).c_str(), name.c_str(), "", 1), 1);
      archive.close();
      expectBelow(kInsertLimit, "extract " + name + ' ' + password, [&] {
        ZipArchive own;
        own.open(archive_.c_str(), kRead);
        own.password(password);
        return own.extract(name.c_str(), folder_.file("out").c_str()) == 1;
      });
      const std::uintmax_t size = std::filesystem::file_size(folder_.file(name));
      ASSERT_EQ(std::filesystem::file_size(folder_.file("out")), size);
      expectBelow(static_cast<long>(size >> 10) + kInsertLimit, "read " + name, [&] {
        FileSystem::Archive own;
        own.open(archive_.c_str());
        Bytes bytes;
        const auto reason =
            own.readAll(own.entries().at(0), bytes, Options().setPassword(password));
        return reason == FileSystem::Reason::None && bytes.size() == size;
      });
    }
  }
}

// In bytes.
rlim_t addressSpace() {
  std::ifstream statistics("/proc/self/statm");
  rlim_t pages = 0;
  statistics >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

TEST_F(MemoryLimits, AShortageOfMemoryIsTheReason) {
  constexpr std::size_t kSize = 64 * kMegabyte;
  ZipArchive made;
  ASSERT_EQ(made.create(archive_.c_str(), 0), 1);
  ASSERT_EQ(made.insert(Bytes(kSize, 'x'), "large", "", 0), 1);
  made.close();
  EXPECT_TRUE(support::within(RLIMIT_AS, addressSpace() + kSize / 2, [&] {
    FileSystem::Archive archive;
    archive.open(archive_.c_str());
    Bytes bytes;
    const auto reason = archive.readAll(archive.entries().at(0), bytes);
    return reason == FileSystem::Reason::OutOfMemory;
  }));
}

// The content shrinks to a 50th, so that its size is believed. Zstandard is written here too.
TEST_F(MemoryLimits, OtherMethodsHoldTheirWindow) {
  constexpr std::size_t kBlocks = 100;
  const std::string noise = support::noise(kMegabyte / 50 * kBlocks);
  std::string content;
  for (std::size_t i = 0; i < kBlocks; ++i) {
    content.resize(i * kMegabyte, ' ');
    content.append(noise, i * (kMegabyte / 50), kMegabyte / 50);
  }
  write("spaces", content);
  const struct {
    const char* method;
    std::uint16_t number;
    long windowMegabytes;
    const char* command;
  } kRows[] = {{"Zstandard", 93, 8, ""},
               {"bzip2", 12, 0, "7z a -tzip -mm=bzip2 -mx=1 a.zip spaces"},
               {"LZMA", 14, 16, "7z a -tzip -mm=LZMA:d=16m -mx=1 a.zip spaces"},
               {"XZ", 95, 16, "7z a -tzip -mm=xz -mx=1 -md=16m a.zip spaces"}};
  for (const auto& row : kRows) {
    if (!FileSystem::canReadMethod(row.number)) continue;
    std::filesystem::remove(archive_);
    if (row.number == 93) {
      expectBelow(kInsertLimit, "add with Zstandard", [&] {
        FileSystem::ArchiveChange change;
        change.insertFile(folder_.file("spaces"), "spaces");
        const auto options = FileSystem::Options().setMethod(FileSystem::Method::Zstandard);
        return static_cast<bool>(change.apply(archive_.c_str(), options));
      });
    } else {
      shell(row.command);
    }
    expectBelow(
        kInsertLimit + (row.windowMegabytes << 10), std::string("extract ") + row.method, [&] {
          FileSystem::Archive archive;
          archive.open(archive_.c_str());
          const auto& entry = archive.entries().at(0);
          return entry.method == row.number &&
                 archive.extract(entry, folder_.file("out").c_str()) == FileSystem::Reason::None;
        });
    ASSERT_TRUE(read("out") == content) << row.method;
  }
}

// Zeros, which take little space in the archive.
TEST_F(MemoryLimits, EntriesOfMoreThanFourGigabytesNeedNoMore) {
  expectBelow(kInsertLimit, "insert from a source", [&] {
    std::uint64_t left = kMoreThanFourGigabytes;
    ArchiveChange change;
    change.insertFrom(
        [&](unsigned char* buffer, std::size_t size) {
          const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(left, size));
          std::fill_n(buffer, count, static_cast<unsigned char>(0));
          left -= count;
          return static_cast<std::ptrdiff_t>(count);
        },
        "large");
    change.insertBytes({'x'}, "small");
    return static_cast<bool>(change.apply(archive_.c_str()));
  });
  expectBelow(kInsertLimit, "remove another entry", [&] {
    ArchiveChange change;
    change.remove("small");
    return static_cast<bool>(change.apply(archive_.c_str()));
  });
  expectBelow(kInsertLimit, "test it", [&] {
    Archive archive;
    if (archive.open(archive_.c_str()) != FileSystem::Reason::None) return false;
    const std::vector<FileSystem::Entry>& entries = archive.entries();
    return entries.size() == 1 && entries[0].size == kMoreThanFourGigabytes &&
           entries[0].crc == 0xb1c2a1a3 && archive.test(entries);
  });
}

}  // namespace
