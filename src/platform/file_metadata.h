#pragma once
// What files and directories have beside names and contents.

#include <cstdint>
#include <optional>

#include "platform/win32.h"

namespace platform {

struct FileMetadata {
  std::uint64_t size = 0;
  DWORD attributes = 0;
  FILETIME lastWrite{};
  std::uint32_t mode = 0;  // as `st_mode`; 0 on Windows
};

// Reads that of the open file which was opened by this path. False, with the error, on failure.
bool readMetadata(HANDLE file, const char* path, FileMetadata& metadata);
// Reads that of a file or a directory, past links or of a link itself. False, with the error, on
// failure.
bool readMetadata(const char* path, FileMetadata& metadata);
bool readMetadataOfLink(const char* path, FileMetadata& metadata);

// What a new file or directory gets. Without it, it has what the system gives to new ones.
struct NewMetadata {
  std::optional<std::uint32_t> mode{};  // permissions and set-id bits; ignored on Windows
  DWORD attributes = 0;                 // read-only, hidden, system; ignored on Linux
  std::optional<FILETIME> lastWrite{};
};

}  // namespace platform
