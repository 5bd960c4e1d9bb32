#pragma once
// Which file a path leads to, and when that was written.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

struct FileState {
  std::pair<std::uint64_t, std::uint64_t> identity;  // equal for two paths of one file
  std::int64_t writeTime = 0;                        // in the unit of the system

  bool operator==(const FileState&) const = default;
};

// Follows links. Nothing if the path leads to nothing.
std::optional<FileState> stateOf(const std::string& path);
