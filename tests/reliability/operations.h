#pragma once
// The library's operations on a small working directory, for tests that disturb each of them.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <span>
#include <string>

namespace operations {

struct Operation {
  const char* name;
  // The folder ends in a separator. True for success.
  std::function<bool(const std::string& folder)> run;
  // Some of the files may have been done already when one fails, each whole.
  bool inParts = false;
  // Files that cannot be listed or read are skipped and are no failure.
  bool passesOver = false;
  // Works on the archive of many entries.
  bool many = false;
};

void PrintTo(const Operation& operation, std::ostream* out);

std::span<const Operation> all();

// The operation's name as the suffix of a test's name.
std::string testName(const testing::TestParamInfo<Operation>& info);

// Contents by relative path.
using Files = std::map<std::string, std::string>;

// Returns all files of a directory. With `entries` the content of an archive is the list of its
// entries, because its bytes include the time.
Files contentsOf(const std::filesystem::path& folder, bool entries);

// Creates the files of the operation: an archive of two entries, a tree, and a copy of the tree
// with other content; for some an archive whose central directory is longer than a page.
void prepare(const std::string& folder, const Operation& operation);

}  // namespace operations
