#pragma once
// A folder for one test. It is deleted with its object, read-only files included.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "support/platform.h"

namespace support {

class TemporaryFolder {
 public:
  TemporaryFolder() : path_(pathOf(makeTemporaryFolder())) { EXPECT_FALSE(path_.empty()); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, ignored)) {
      if (entry.is_symlink(ignored)) continue;
      std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_write,
                                   std::filesystem::perm_options::add, ignored);
    }
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  // The folder as the library gets it.
  std::string name() const { return textOf(path_); }
  // The folder with a trailing separator, as the library's functions take it.
  std::string text() const { return name() + "\\"; }
  // Number of files and folders that lie directly in it.
  std::size_t entries() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_), {}));
  }
  // A file in the folder; `name` is a text of the process code page.
  std::string file(const std::string& name) const { return textOf(path_ / pathOf(name)); }

 private:
  std::filesystem::path path_;
};

inline bool exists(const std::string& path) { return std::filesystem::exists(pathOf(path)); }

inline void writeFile(const std::string& path, const std::string& bytes) {
  const std::filesystem::path native = pathOf(path);
  std::filesystem::create_directories(native.parent_path());
  std::ofstream out(native, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(out.good()) << path;
}

inline std::string readFile(const std::string& path) {
  std::ifstream in(pathOf(path), std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

inline void makeReadOnly(const std::string& path) {
  // FAT keeps the attribute alone, and accepts no mode that says more.
  constexpr auto kWrite = std::filesystem::perms(0222);
  std::filesystem::permissions(pathOf(path), kWrite, std::filesystem::perm_options::remove);
}

}  // namespace support
