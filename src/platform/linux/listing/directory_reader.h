#pragma once
// Reads the entries of a directory that is open already.

#include <dirent.h>

#include <cstddef>
#include <memory>

namespace platform::native {

// Needs no more system calls than those that read, unlike a stream of an open directory, and has
// memory only while it reads.
class DirectoryReader {
 public:
  // Returns the next entry of the directory, at first the first one; it is valid until the next call.
  // Null at the end, then with errno 0, and on failure.
  const dirent64* next(int directory);

 private:
  std::unique_ptr<char[]> block_;
  std::size_t size_ = 0;      // of the entries in the block
  std::size_t position_ = 0;  // of the next one
};

}  // namespace platform::native
