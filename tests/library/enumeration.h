#pragma once
// The fixture of the tests that list folders.

#include <filesystem/filesystem.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/folder_test.h"
#include "support/open_file.h"

using Names = std::vector<std::string>;

class Enumeration : public support::FolderTest {
 protected:
  void make(std::initializer_list<const char*> files) {
    for (const char* name : files) write(name, name);
  }
  static Names sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
  }
  // Returns paths without the folder at their start, sorted.
  Names below(Names paths) const {
    for (std::string& path : paths) {
      EXPECT_TRUE(path.starts_with(text_)) << path;
      path.erase(0, text_.size());
    }
    return sorted(paths);
  }

  std::string text_ = folder_.text();
  const char* path_ = text_.c_str();
};
