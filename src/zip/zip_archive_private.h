#pragma once
// What all copies of a ZipArchive share, and the engine's objects as owners.

#include <memory>
#include <string>
#include <utility>

#include "platform/code_page.h"
#include "zip/engine.h"
#include "zip/held_file.h"

class ZipArchivePrivate {
 public:
  std::string password;  // empty: none
  ZipHeldFile file;
  unsigned owners = 1;  // ZipArchive objects that stand on this record

  const char* passwordOrNull() const { return password.empty() ? nullptr : password.c_str(); }
};

namespace zip {

struct ReaderCloser {
  void operator()(ZipReader* reader) const { ZipCloseReader(reader); }
};
using Reader = std::unique_ptr<ZipReader, ReaderCloser>;

// Closes an entry on the way out.
class OpenEntry {
 public:
  OpenEntry(ZipReader* reader, const char* password)
      : reader_(reader), open_(ZipOpenEntry(reader, nullptr, nullptr, 0, password) == 0) {}
  OpenEntry(const OpenEntry&) = delete;
  OpenEntry& operator=(const OpenEntry&) = delete;
  ~OpenEntry() {
    if (open_) ZipCloseEntry(reader_);
  }
  explicit operator bool() const { return open_; }

 private:
  ZipReader* reader_;
  bool open_;
};

// A writer that is closed, and so committed, at the latest with its owner.
class Writer {
 public:
  Writer(const char* path, ZipWriterMode mode) : writer_(ZipOpenWriter(path, mode)) {}
  Writer(Writer&& other) noexcept : writer_(std::exchange(other.writer_, nullptr)) {}
  Writer& operator=(Writer&& other) noexcept {
    std::swap(writer_, other.writer_);
    return *this;
  }
  ~Writer() { commit(nullptr); }
  explicit operator bool() const { return writer_ != nullptr; }
  ZipWriter* get() const { return writer_; }
  // Whether the archive now has what was written; null keeps its comment.
  bool commit(const char* comment) {
    ZipWriter* writer = std::exchange(writer_, nullptr);
    return writer != nullptr && ZipCloseWriter(writer, comment) == 0;
  }

 private:
  ZipWriter* writer_;
};

// Longest entry name that is handled, in bytes; the buffers hold one more.
inline constexpr std::uint32_t kLongestName = 260;

// Names between callers (ANSI) and archives (OEM).
inline std::string storedName(const std::string& name) {
  return platform::convertCodePage(name, CP_ACP, CP_OEMCP);
}
inline std::string callerName(const std::string& name) {
  return platform::convertCodePage(name, CP_OEMCP, CP_ACP);
}

}  // namespace zip
