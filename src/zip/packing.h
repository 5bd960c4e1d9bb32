#pragma once
// Packing the files of a directory into a new archive.

#include <filesystem/zip.h>

#include <optional>
#include <string>
#include <vector>

namespace zip {

using PackReport = FileSystem::PackReport;

// Lists the files below a directory, whose path ends in a separator, and reports those that cannot
// be packed. `archive` is left out. Nothing if one of them fails.
std::optional<std::vector<std::string>> packableFiles(const std::string& base,
                                                      const std::string& archive,
                                                      PackReport& report);

}  // namespace zip
