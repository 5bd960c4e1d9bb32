#pragma once
// An archive and its entries, as the commands use them.

#include <filesystem/access.h>
#include <filesystem/zip_archive.h>

#include <string>
#include <string_view>
#include <vector>

#include "central_directory.h"

struct Entry {
  std::string name;
  EntryRecord record;

  bool isDirectory() const;
};

// An archive that is open. The constructor throws Failure if the file does not
// exist, may not be opened for `access`, or is no sound zip archive.
class Archive {
 public:
  Archive(const std::string& path, unsigned int access);

  ZipArchive& zip() { return zip_; }
  const std::string& path() const { return path_; }
  // Names of all entries in their order.
  const std::vector<std::string>& names() const { return names_; }
  // All entries with their records. The archive is open for reading only.
  std::vector<Entry> entries() const;

 private:
  std::string path_;
  ZipArchive zip_;
  std::vector<std::string> names_;
};

// The longest entry name that the library handles, in bytes.
inline constexpr std::size_t kLongestEntryName = 260;

// Indices of the names that the patterns select, in the order of the names. A
// pattern that is the name of an entry selects that name only. In any other `*`
// matches any text, `?` any character, and `/` and `\` are the same. Throws
// Failure if a pattern selects nothing.
std::vector<std::size_t> selectEntries(const std::vector<std::string>& names,
                                       const std::vector<std::string>& patterns,
                                       const std::string& zip);

// For each entry, whether it is the last of its name. Only that can be extracted by the name.
std::vector<bool> lastOfNames(const std::vector<Entry>& entries);

// The name of a compression method, its number if it has none.
std::string methodName(std::uint16_t method);

// Why an entry could not be read, as far as its record shows it.
std::string readFailure(const Entry& entry, bool hasPassword);
