#pragma once
// Telling whether two paths lead to the same folder.

#include <cstdint>

namespace platform {

struct FolderIdentity {
  std::uint64_t volume = 0;
  std::uint64_t index = 0;

  bool operator==(const FolderIdentity&) const = default;
};

// Follows links. False if there is no such folder.
bool folderIdentity(const char* path, FolderIdentity& identity);

}  // namespace platform
