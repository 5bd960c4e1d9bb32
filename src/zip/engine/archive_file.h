#pragma once
// An archive file with transfers at positions, each whole or failed.

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace zip_engine {

class ArchiveFile {
 public:
  // As CreateFileA; false if the file cannot be opened.
  bool open(const char* path, DWORD access, DWORD share, DWORD disposition);
  explicit operator bool() const { return static_cast<bool>(handle_); }

  std::optional<std::uint64_t> size() const;
  bool readAt(std::uint64_t position, void* buffer, std::size_t size) const;
  bool writeAt(std::uint64_t position, const void* data, std::size_t size);
  // Cuts the file, or extends it with zeros.
  bool truncate(std::uint64_t size);
  // Waits until everything written so far, the size included, survives a power failure.
  bool sync();

 private:
  platform::FileHandle handle_;
};

}  // namespace zip_engine
