#pragma once
// Packing the files of a directory into a new archive.

#include <filesystem/options.h>
#include <filesystem/results.h>

#include <cstdint>
#include <string>
#include <vector>

#include "reporting/progress_relay.h"

namespace zip {

// Paths of what is packed.
struct PackableFiles {
  std::vector<std::string> paths;    // of the files
  std::vector<std::string> links;    // if links are kept
  std::vector<std::string> folders;  // if folders are kept; each precedes those in it
  std::uint64_t bytes = 0;           // of all files

  std::size_t size() const { return paths.size() + links.size() + folders.size(); }
};

// Lists what is below a directory, whose path ends in a separator, and the directory itself, and
// reports what cannot be packed, by its path below it. `archive` is left out. Report::reason is the
// reason of the first one that fails, or says that the call was cancelled.
PackableFiles packableFiles(const std::string& base, const std::string& archive,
                            const FileSystem::Options& options,
                            FileSystem::Detail::ProgressRelay& progress,
                            FileSystem::Report& report);

// The stored name of a path below a packed directory. What lies in a directory `c:` gets a name that
// begins with a dot: unpacking refuses that of a drive.
std::string storedPath(const std::string& path);

}  // namespace zip
