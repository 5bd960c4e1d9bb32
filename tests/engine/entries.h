#pragma once
// Archives of a few entries, written and read through the engine.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "support/folder_test.h"
#include "support/noise.h"
#include "zip/engine.h"

namespace entries {

using support::noise;
using Entries = std::map<std::string, std::string>;

// The fixture of tests of one archive.
class ArchiveTest : public support::FolderTest {
 protected:
  std::string path_ = folder_.file("a.zip");
};

struct ReaderCloser {
  void operator()(ZipReader* reader) const { ZipCloseReader(reader); }
};
using Reader = std::unique_ptr<ZipReader, ReaderCloser>;

inline std::string repetitiveText(std::size_t size) {
  std::string text;
  while (text.size() < size) text += "line " + std::to_string(text.size() / 7) + "\n";
  text.resize(size);
  return text;
}

inline bool addEntry(ZipWriter* writer, const std::string& name, const std::string& content,
                     const char* password = nullptr, int level = ZipLevelDefault,
                     bool isSizeKnown = true) {
  ZipNewEntryInfo info{};
  info.date = {.second = 3, .minute = 3, .hour = 4, .day = 5, .month = 6, .year = 2021};
  info.internalAttributes = 1;
  info.externalAttributes = 0x21;
  constexpr char kLocalExtra[] = "\x34\x12\1\0L";
  constexpr char kCentralExtra[] = "\x34\x12\1\0C";
  const std::uint32_t crc = ZipCrc32(0, content.data(), static_cast<std::uint32_t>(content.size()));
  if (isSizeKnown) ZipSetSize(writer, content.size());
  if (ZipOpenNewEntry(writer, name.c_str(), &info, kLocalExtra, 5, kCentralExtra, 5, "note",
                      ZipMethodDeflate, level, 0, -15, 8, 0, password, crc) != 0) {
    return false;
  }
  // In pieces of odd sizes, so that borders do not fall together.
  for (std::size_t at = 0; at < content.size();) {
    const std::size_t count = std::min<std::size_t>(content.size() - at, 700001);
    if (ZipWriteEntry(writer, content.data() + at, static_cast<std::uint32_t>(count)) != 0) break;
    at += count;
  }
  return ZipCloseNewEntry(writer) == 0;
}

inline void writeArchive(const std::string& path, const Entries& entries, int mode = ZipModeCreate,
                         const char* password = nullptr, int encryption = ZipEncryptTraditional) {
  ZipWriter* const writer = ZipOpenWriter(path.c_str(), mode);
  ASSERT_NE(writer, nullptr);
  ASSERT_EQ(ZipSetEncryption(writer, encryption), 0);
  for (const auto& [name, content] : entries) {
    ASSERT_TRUE(addEntry(writer, name, content, password)) << name;
  }
  ASSERT_EQ(ZipCloseWriter(writer, nullptr), 0);
}

inline std::string globalComment(ZipReader* reader) {
  ZipGlobalInfo info{};
  EXPECT_EQ(ZipReadGlobalInfo(reader, &info), 0);
  std::string comment(info.commentLength, '\0');
  ZipReadGlobalComment(reader, comment.data(), info.commentLength);
  return comment;
}

// Calls `use(name)` for each entry, which is the current one meanwhile.
template <typename Use>
void forEachEntry(ZipReader* reader, Use use) {
  for (int status = ZipFirstEntry(reader); status == 0; status = ZipNextEntry(reader)) {
    char name[300];
    ZipReadEntryInfo(reader, nullptr, name, sizeof(name), nullptr, 0, nullptr, 0);
    use(std::string(name));
  }
}

// Copies all entries into a new archive.
inline void copyArchive(const std::string& path, const std::string& target,
                        const std::string& comment) {
  const Reader reader(ZipOpenReader(path.c_str()));
  ZipWriter* const writer = ZipOpenWriter(target.c_str(), ZipModeCreate);
  forEachEntry(reader.get(), [&](const std::string& name) {
    EXPECT_EQ(ZipCopyEntry(writer, reader.get(), nullptr, nullptr), 0) << name;
  });
  EXPECT_EQ(ZipCloseWriter(writer, comment.c_str()), 0);
}

// Reads the current entry in steps of `step` bytes. False if it fails.
inline bool readCurrent(ZipReader* reader, std::string& content, std::uint32_t step,
                        const char* password = "secret") {
  if (ZipOpenEntry(reader, nullptr, nullptr, 0, password) != 0) return false;
  content.clear();
  std::string block(step, '\0');
  int count;
  while ((count = ZipReadEntry(reader, block.data(), step)) > 0) {
    content.append(block, 0, static_cast<std::size_t>(count));
  }
  return count == 0;
}

// Reads one entry through a reader that knows no other. False if it fails.
inline bool readAlone(const std::string& path, const std::string& name, std::string& content,
                      std::uint32_t step) {
  const Reader reader(ZipOpenReaderAt(path.c_str(), name.c_str()));
  return readCurrent(reader.get(), content, step);
}

// Returns the content of all entries but directories; "<unreadable>" for those that cannot be read.
// Each is the same if it is read alone.
inline Entries readArchive(const std::string& path, std::uint32_t step = 1 << 14) {
  Entries entries;
  const Reader reader(ZipOpenReader(path.c_str()));
  if (reader == nullptr) return {{"<no archive>", ""}};
  forEachEntry(reader.get(), [&](const std::string& name) {
    if (name.ends_with('/')) return;
    if (!readCurrent(reader.get(), entries[name], step)) entries[name] = "<unreadable>";
  });
  for (const auto& [name, content] : entries) {
    std::string alone;
    if (!readAlone(path, name, alone, step)) alone = "<unreadable>";
    EXPECT_TRUE(alone == content) << name;
  }
  return entries;
}

}  // namespace entries
