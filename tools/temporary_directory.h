#pragma once
// A directory for content that is too large for memory.

#include <cstdio>
#include <memory>
#include <string>

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

// Creates a file that no other user can read or write, for reading and writing. Null if that fails
// or the file exists.
FilePointer createPrivateFile(const std::string& path);

// A new directory in the system's temporary directory, for one file. No other user can enter it. It
// is deleted with the object and, on Linux, if a signal that can be caught ends the program. There
// is one at a time.
class TemporaryDirectory {
 public:
  // Throws Failure if the directory cannot be created.
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  // The path of the file, which has this name.
  std::string file(const std::string& name);

  // Deletes the directory before the end of the object, and the file, which can be open: what was
  // opened remains readable if the system allows that.
  void remove();

 private:
  std::string path_;
};
