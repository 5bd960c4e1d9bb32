#pragma once
// The file that a ZipArchive holds between its calls, as a lock and for nothing
// else, and the guard that takes it again after the engine has used it.

#include <string>

#include "platform/unique_handle.h"

class ZipHeldFile {
 public:
  DWORD access = GENERIC_READ | GENERIC_WRITE;
  std::string name;  // empty: bound to no file

  bool held() const { return static_cast<bool>(handle_); }
  void release() { handle_.reset(); }
  // Takes the file, if there is a name and the platform grants it: alone for
  // writing, with other readers for reading.
  void acquire();
  // Removes what a killed process left beside the held file.
  void cleanUp();
  // Binds to another file, or to none for null. The handle stays only if the
  // names are equal but for letter case.
  void setName(const char* newName);

 private:
  platform::FileHandle handle_;
};

// Gives the file up for the engine, and takes it again on every way out.
class ZipHeldFileGuard {
 public:
  explicit ZipHeldFileGuard(ZipHeldFile& file) : file_(file) { file_.release(); }
  ZipHeldFileGuard(const ZipHeldFileGuard&) = delete;
  ZipHeldFileGuard& operator=(const ZipHeldFileGuard&) = delete;
  ~ZipHeldFileGuard() { file_.acquire(); }

 private:
  ZipHeldFile& file_;
};
