// Archives with an end record far from the end of the file.

#include <csignal>

#include "engine/entries.h"
#include "failing_calls.h"
#include "support/linux/forked_process.h"
#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_record.h"

namespace {

// An archive of one entry, whose content is stored as it is.
std::string archiveWith(const std::string& name, const std::string& content,
                        const std::string& comment = "") {
  constexpr int kLevelStored = 0;
  const support::TemporaryFolder folder;
  const std::string path = folder.file("a.zip");
  ZipWriter* const writer = ZipOpenWriter(path.c_str(), ZipModeCreate);
  EXPECT_TRUE(entries::addEntry(writer, name, content, nullptr, kLevelStored));
  EXPECT_EQ(ZipCloseWriter(writer, comment.c_str()), 0);
  return support::readFile(path);
}

std::string directoryOf(const std::string& archive) {
  const std::size_t start = archive.find("PK\1\2");
  return archive.substr(start, archive.size() - 22 - start);
}

// The simulated power failures show that such an archive is read. This shows which others are not.
TEST(InterruptedAppend, OnlyItExplainsWhatFollowsTheEndRecord) {
  constexpr std::uintmax_t kMegabyte = 1 << 20;
  const std::string inner = archiveWith("entry", "content");
  const std::string outer = archiveWith("inner.zip", inner);
  const std::string cutInner = outer.substr(0, outer.find(inner) + inner.size());
  std::string other = directoryOf(inner) + inner.substr(inner.size() - 22);
  other[other.find("entry")] = 'E';
  // A backup directory that fills its last sector, so that its end record is in one that was lost.
  const std::string three = archiveWith("PK\5\6 PK\5\6 PK\5\6", "content");
  const std::string four = archiveWith("PK\5\6 PK\5\6 PK\5\6 PK\5\6", "content");
  const auto zerosBefore = [](const std::string& archive) {
    return kMegabyte - (archive.size() + directoryOf(archive).size()) % 512;
  };
  const std::string lost(22, '\0');
  const struct {
    const char* name;
    std::string start;
    std::uintmax_t zeros;
    std::string end;
    bool readable;
  } kFiles[] = {
      {"zeros", inner, 128 * kMegabyte - 22, "", true},
      {"an end record across two blocks", inner, kMegabyte - 21, "", true},
      {"the longest comment", archiveWith("entry", "content", std::string(0xFFFF, 'c')), kMegabyte,
       "", true},
      {"signatures in the directory", three, zerosBefore(three), directoryOf(three) + lost, true},
      {"too many signatures", four, zerosBefore(four), directoryOf(four) + lost, false},
      {"too many zeros", inner, 128 * kMegabyte - 21, "", false},
      {"another byte", inner, kMegabyte, "x", false},
      {"another directory", inner, kMegabyte, other.substr(0, other.size() - 1), false},
      {"archive in an archive", cutInner, kMegabyte, "", false},
  };
  const support::TemporaryFolder folder;
  const std::string path = folder.file("a.zip");
  for (const auto& file : kFiles) {
    support::writeFile(path, file.start);
    std::filesystem::resize_file(path, file.start.size() + file.zeros);
    std::ofstream(path, std::ios::app | std::ios::binary) << file.end;
    const std::string content = entries::readArchive(path).begin()->second;
    EXPECT_EQ(content, file.readable ? "content" : "") << file.name;
    if (file.start == inner) {
      const entries::Reader entry(ZipOpenReaderAt(path.c_str(), "entry"));
      EXPECT_EQ(entry != nullptr, file.readable) << file.name;
    }
    // A call that fails explains nothing.
    if (file.readable || file.zeros > kMegabyte) continue;
    int total = 0;
    for (int number = 1; number <= total + 1; ++number) {
      const failing::Failing failing(failing::Fault::OneCall, number);
      EXPECT_EQ(ZipOpenReader(path.c_str()), nullptr) << file.name << number;
      total = failing.count();
    }
  }
}

// A name may have lost a sector in the copy of the directory, which is sound otherwise.
TEST(InterruptedAppend, ALostSectorOfANameIsNoticed) {
  constexpr std::size_t kSector = 512;
  const std::string name(3 * kSector, 'n');
  std::string bytes = archiveWith(name, "content");
  const std::string directory = directoryOf(bytes);
  bytes.resize(8 * kSector);
  zip_engine::Bytes end;
  zip_engine::appendEndRecords(end, bytes.size(), directory.size(), 1, "");
  std::string copy = directory;
  copy.replace(kSector, kSector, kSector, '\0');
  bytes += copy;
  bytes.append(end.begin(), end.end());
  const support::TemporaryFolder folder;
  const std::string path = folder.file("a.zip");
  support::writeFile(path, bytes);
  std::string content;
  EXPECT_TRUE(entries::readAlone(path, name, content, 10));
}

// An archive whose directory is just below 4 GiB, after an entry that is a hole. A copy of it lies
// beyond, where the end record is longer.
class NearFourGigabytes : public support::FolderTest {
 protected:
  void SetUp() override {
    if (!support::fileSystem().largeFiles) GTEST_SKIP() << "no sparse files here";
    constexpr std::uint64_t kDirectory = (std::uint64_t{4} << 30) - (122 << 10);
    zip_engine::EntryRecord small;
    small.name = "small";
    small.crc = ZipCrc32(0, "content", 7);
    small.compressedSize = small.uncompressedSize = 7;
    small.comment = std::string(60000, 'c');
    zip_engine::EntryRecord hole = small;
    hole.name = "hole";
    const std::uint64_t smallSize = zip_engine::kLocalSize + small.name.size() + 7;
    const std::uint64_t holeStart = zip_engine::kLocalSize + hole.name.size();
    const std::uint64_t smallStart = kDirectory - smallSize;
    hole.compressedSize = hole.uncompressedSize = smallStart - holeStart;
    zip_engine::Bytes start;
    appendLocalHeader(start, hole);
    zip_engine::Bytes end;
    appendLocalHeader(end, small);
    end.insert(end.end(), {'c', 'o', 'n', 't', 'e', 'n', 't'});
    appendCentralRecord(directory_, hole, 0);
    appendCentralRecord(directory_, small, smallStart);
    end.insert(end.end(), directory_.begin(), directory_.end());
    zip_engine::appendEndRecords(end, kDirectory, directory_.size(), 2, "");
    support::writeFile(path_, "");
    write(0, start);
    write(smallStart, end);
    size_ = std::filesystem::file_size(path_);
  }

  void write(std::uint64_t position, const zip_engine::Bytes& bytes) const {
    std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(position));
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.flush().good());
  }
  bool append() const {
    ZipWriter* const writer = ZipOpenWriter(path_.c_str(), ZipModeAppend);
    return writer != nullptr && entries::addEntry(writer, "added", entries::noise(5000)) &&
           ZipCloseWriter(writer, nullptr) == 0;
  }
  void expectWhole() const {
    const entries::Reader reader(ZipOpenReader(path_.c_str()));
    ASSERT_NE(reader, nullptr);
    std::string content;
    EXPECT_EQ(ZipLocateEntry(reader.get(), "hole", 0), 0);
    EXPECT_EQ(ZipLocateEntry(reader.get(), "small", 0), 0);
    EXPECT_TRUE(entries::readCurrent(reader.get(), content, 10));
    EXPECT_EQ(content, "content");
  }

  const std::string path_ = folder_.file("a.zip");
  zip_engine::Bytes directory_;
  std::uint64_t size_ = 0;
};

TEST_F(NearFourGigabytes, AnAppendIsKilledBeforeAnyCall) {
  int total = 0;
  {
    const failing::Failing counting(failing::Fault::Interruption, 0);
    ASSERT_TRUE(append());
    total = counting.count();
  }
  EXPECT_GT(total, 5);
  for (int number = 1; number <= total; ++number) {
    SCOPED_TRACE(number);
    directory_.clear();
    SetUp();
    support::ForkedProcess process([&](const auto&) {
      const failing::Failing failing(failing::Fault::Interruption, number, [] { raise(SIGKILL); });
      return append() ? 0 : 1;
    });
    EXPECT_EQ(process.wait(), -1);
    expectWhole();
    EXPECT_TRUE(append());
    expectWhole();
  }
}

// A power failure keeps some sectors of the copy and of its end record.
TEST_F(NearFourGigabytes, AnAppendLosesSectors) {
  constexpr std::uint64_t kCopy = (std::uint64_t{4} << 30) + 1000;
  constexpr std::size_t kSector = 512;
  zip_engine::Bytes copy = directory_;
  zip_engine::appendEndRecords(copy, kCopy, directory_.size(), 2, "");
  const std::size_t firstSector = kSector - kCopy % kSector;
  for (const std::size_t lost : {firstSector, firstSector + 100 * kSector, copy.size() - kSector}) {
    SCOPED_TRACE(lost);
    zip_engine::Bytes bytes = copy;
    // A whole one, or the end of the file.
    const std::size_t start = lost - (kCopy + lost) % kSector;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(start),
                std::min(bytes.size() - start, 2 * kSector), static_cast<unsigned char>(0));
    std::filesystem::resize_file(path_, size_);
    write(kCopy, bytes);
    expectWhole();
  }
}

}  // namespace
