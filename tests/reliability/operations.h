#pragma once
// The library's operations on a small working directory, for tests that disturb each of them.

#include <filesystem>
#include <functional>
#include <map>
#include <ostream>
#include <span>
#include <string>

namespace operations {

enum Traits : unsigned {
  kInParts = 1,     // some of the files may have been done already when one fails, each whole
  kPassesOver = 2,  // files that cannot be listed or read are skipped and are no failure
  kMany = 4,        // the central directory of the archive is longer than a page
  kLarge = 8,       // writes more than a megabyte
  kEmpty = 16,      // there is a file without bytes, empty.zip
  kManyFiles = 32,  // both trees have eight more small files
};

struct Operation {
  const char* name;
  // The folder ends in a separator. True for success.
  std::function<bool(const std::string& folder)> run;
  unsigned traits = 0;

  bool is(Traits trait) const { return (traits & trait) != 0; }
};

void PrintTo(const Operation& operation, std::ostream* out);

std::span<const Operation> all();

// Contents by relative path, or by the name of an entry.
using Files = std::map<std::string, std::string>;

// Returns all files of a directory. With `entries` the content of an archive is the list of its
// entries, because its bytes include the time.
Files contentsOf(const std::filesystem::path& folder, bool entries);

// Creates the files of the operation: an archive of two or more entries, a tree, and a copy of the
// tree with other content.
void prepare(const std::string& folder, const Operation& operation);

}  // namespace operations
