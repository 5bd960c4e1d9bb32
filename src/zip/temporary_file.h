#pragma once
// Temporary files, deleted with their objects.

#include "platform/win32.h"

namespace zip {

// An empty file with a new name in the system's temporary folder.
class TemporaryFile {
 public:
  TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  // True if the file could be created.
  explicit operator bool() const { return created_; }
  const char* path() const { return path_; }

 private:
  char path_[MAX_PATH] = {};
  bool created_ = false;
};

}  // namespace zip
