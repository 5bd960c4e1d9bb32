#pragma once
// An archive in a folder of its own, for one test.

#include <filesystem/filesystem.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/folder_test.h"
#include "support/open_file.h"

using Names = std::vector<std::string>;
using Bytes = std::vector<unsigned char>;

inline constexpr unsigned int kRead = GENERIC_READ;
inline constexpr unsigned int kReadWrite = GENERIC_READ | GENERIC_WRITE;

inline Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// Returns the contents of all entries, with their comments.
inline std::map<std::string, std::string> entriesOf(const std::string& path) {
  std::map<std::string, std::string> entries;
  ZipArchive archive;
  std::vector<std::pair<std::string, std::string>> names;
  archive.open(path.c_str(), kRead);
  if (archive.content(names) == 0) return {{"<no archive>", ""}};
  for (const auto& [name, comment] : names) {
    Bytes bytes;
    EXPECT_EQ(archive.extract(name.c_str(), bytes), 1) << name;
    const std::string content(bytes.begin(), bytes.end());
    EXPECT_TRUE(entries.emplace(name, content + comment).second) << name;
  }
  return entries;
}

class Zip : public support::FolderTest {
 protected:
  // Creates the archive with one entry for each name. The content of an entry is its name.
  void make(const Names& names) {
    ZipArchive archive;
    ASSERT_EQ(archive.create(path_.c_str(), 1), 1);
    for (const std::string& name : names) {
      ASSERT_EQ(archive.insert(bytesOf(name), name, "note of " + name, 0), 1) << name;
    }
  }
  // The archive, opened for one call.
  ZipArchive readable() const { return opened(kRead); }
  ZipArchive writable() const { return opened(kReadWrite); }
  ZipArchive opened(unsigned int access) const {
    ZipArchive archive;
    EXPECT_EQ(archive.open(path_.c_str(), access), 1);
    return archive;
  }
  FileSystem::Archive openArchive() const {
    FileSystem::Archive archive;
    EXPECT_EQ(archive.open(path_.c_str()), FileSystem::Reason::None);
    return archive;
  }
  Names names() const {
    Names result;
    readable().enumerate(result);
    return result;
  }
  std::string contentOf(const char* name, const char* password = "") const {
    ZipArchive archive = readable();
    archive.password(password);
    Bytes bytes;
    if (archive.extract(name, bytes) == 0) return "<nothing>";
    return {bytes.begin(), bytes.end()};
  }
  std::string path_ = folder_.file("a.zip");
  std::string in_ = folder_.file("in");
  std::string out_ = folder_.file("out");
};
