// Archives with an end record far from the end of the file.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "engine/entries.h"
#include "failing_calls.h"
#include "support/temporary_folder.h"

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

}  // namespace
