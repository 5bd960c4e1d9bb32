#pragma once
// The identity of a file or folder, to compare two paths, and its kind.

#include <cstdint>

namespace platform {

struct FileIdentity {
  std::uint64_t volume = 0;
  std::uint64_t index = 0;

  bool operator==(const FileIdentity&) const = default;
};

// Follows links. False if nothing has the path.
bool fileIdentity(const char* path, FileIdentity& identity);

// True if the path is that of something else than a file, past links: of a device, a pipe, a
// folder, or a link to nothing.
bool isNoFile(const char* path);

}  // namespace platform
