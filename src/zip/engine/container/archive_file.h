#pragma once
// An archive file. A transfer at a position is complete, or fails.

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace zip_engine {

class ArchiveFile {
 public:
  // Opens the file as CreateFileA does. Returns false on failure.
  bool open(const char* path, DWORD access, DWORD share, DWORD disposition);
  explicit operator bool() const { return static_cast<bool>(handle_); }

  std::optional<std::uint64_t> size() const;
  bool readAt(std::uint64_t position, void* buffer, std::size_t size) const;
  bool writeAt(std::uint64_t position, const void* data, std::size_t size);
  // Truncates the file, or extends it with zeros.
  bool truncate(std::uint64_t size);
  // Waits until everything written so far, the size included, survives a power failure.
  bool sync();
  // Closes the file. Returns false if the system reports that content could not be written, as
  // network file systems do when the disk is full.
  bool close();

 private:
  platform::FileHandle handle_;
};

}  // namespace zip_engine
