#pragma once
// The identity of a file or folder, to compare two paths.

#include <cstdint>

namespace platform {

struct FileIdentity {
  std::uint64_t volume = 0;
  std::uint64_t index = 0;

  bool operator==(const FileIdentity&) const = default;
};

// Follows links. False if nothing has the path.
bool fileIdentity(const char* path, FileIdentity& identity);

}  // namespace platform
