#pragma once
// The file that a ZipArchive holds open between its calls.

#include <string>

#include "platform/unique_handle.h"

// The handle is a lock: nothing is read or written through it.
class ZipHeldFile {
 public:
  DWORD access = GENERIC_READ | GENERIC_WRITE;
  std::string name;  // empty: bound to no file

  bool held() const { return static_cast<bool>(handle_); }
  bool canRead() const { return held() && (access & GENERIC_READ) != 0; }
  bool canWrite() const { return held() && (access & GENERIC_WRITE) != 0; }

  void release() { handle_.reset(); }
  // Opens the file, if there is a name and the platform grants it: exclusively for writing, shared
  // with other readers for reading.
  void acquire();
  // Deletes the unfinished new version of the held file that a killed process left beside it.
  void cleanUp();
  // Releases the file, and binds to another one, or to none for null.
  void setName(const char* newName);

 private:
  platform::FileHandle handle_;
};

// Releases the file, so that the engine can open it, and acquires it again when the scope is left.
class ZipHeldFileGuard {
 public:
  explicit ZipHeldFileGuard(ZipHeldFile& file) : file_(file) { file_.release(); }
  ZipHeldFileGuard(const ZipHeldFileGuard&) = delete;
  ZipHeldFileGuard& operator=(const ZipHeldFileGuard&) = delete;
  ~ZipHeldFileGuard() { file_.acquire(); }

 private:
  ZipHeldFile& file_;
};
