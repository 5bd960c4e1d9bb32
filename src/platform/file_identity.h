#pragma once
// Telling whether two paths lead to the same file or folder.

#include <cstdint>

namespace platform {

struct FileIdentity {
  std::uint64_t volume = 0;
  std::uint64_t index = 0;

  bool operator==(const FileIdentity&) const = default;
};

// Follows links. False if there is nothing.
bool fileIdentity(const char* path, FileIdentity& identity);

}  // namespace platform
