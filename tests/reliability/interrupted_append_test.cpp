// Archives with an end record far from the end of the file.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "support/temporary_folder.h"
#include "zip/engine.h"

namespace {

// An archive of one stored entry.
std::string archiveWith(const std::string& name, const std::string& content) {
  const support::TemporaryFolder folder;
  const std::string path = folder.file("a.zip");
  ZipWriter* const writer = ZipOpenWriter(path.c_str(), ZipModeCreate);
  ZipOpenNewEntry(writer, name.c_str(), nullptr, nullptr, 0, nullptr, 0, nullptr, ZipMethodStored,
                  ZipLevelDefault, 0, -15, 8, 0, nullptr, 0);
  ZipWriteEntry(writer, content.data(), static_cast<std::uint32_t>(content.size()));
  ZipCloseNewEntry(writer);
  EXPECT_EQ(ZipCloseWriter(writer, nullptr), 0);
  return support::readFile(path);
}

// The simulated power failures show that such an archive is read. This shows which others are not.
TEST(InterruptedAppend, OnlyItExplainsWhatFollowsTheEndRecord) {
  constexpr std::uintmax_t kMegabyte = 1 << 20;
  const std::string inner = archiveWith("entry", "content");
  const std::string outer = archiveWith("inner.zip", inner);
  const std::string cutInner = outer.substr(0, outer.find(inner) + inner.size());
  const std::string directory = inner.substr(inner.find("PK\1\2"));
  std::string other = directory;
  other[other.find("entry")] = 'E';
  const struct {
    const char* name;
    std::string start;
    std::uintmax_t zeros;
    std::string end;
    bool readable;
  } kFiles[] = {
      {"zeros", inner, 120 * kMegabyte, "", true},
      {"too many zeros", inner, 130 * kMegabyte, "", false},
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
    ZipReader* const reader = ZipOpenReader(path.c_str());
    EXPECT_EQ(reader != nullptr, file.readable) << file.name;
    if (reader != nullptr) {
      EXPECT_EQ(ZipLocateEntry(reader, "entry", 0), 0) << file.name;
    }
    ZipCloseReader(reader);
  }
}

}  // namespace
