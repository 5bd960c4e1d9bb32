#pragma once
// Packing the files of a directory into a new archive.

#include <filesystem/results.h>

#include <cstdint>
#include <string>
#include <vector>

#include "reporting/progress_relay.h"

namespace zip {

struct PackableFiles {
  std::vector<std::string> paths;
  std::uint64_t bytes = 0;  // of all of them
};

// Lists the files below a directory, whose path ends in a separator, and reports those that cannot
// be packed, by their paths below it. `archive` is left out. Report::reason is the reason of the
// first one that fails, or says that the call was cancelled.
PackableFiles packableFiles(const std::string& base, const std::string& archive,
                            FileSystem::Detail::ProgressRelay& progress,
                            FileSystem::Report& report);

}  // namespace zip
