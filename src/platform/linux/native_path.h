#pragma once
// Windows path text to native path: separators, drives, shares, U+F05C.

#include <climits>
#include <string>
#include <string_view>

#include "platform/linux/win32_linux.h"

namespace platform::native {

// A native path made from a path text, in a buffer of its own: no heap.
class NativePath {
 public:
  // Null and empty texts, unmapped drives and shares, and texts that are too
  // long are not valid; error() then tells the Win32 code. Trailing separators
  // are dropped, but for the root's.
  explicit NativePath(const char* text);

  bool valid() const { return error_ == ERROR_SUCCESS; }
  DWORD error() const { return error_; }
  // Whether the text ended in a separator, so that it can only name a folder.
  bool hadTrailingSeparator() const { return trailing_; }
  const char* c_str() const { return native_; }
  // Length of c_str() in bytes.
  std::size_t size() const { return size_; }

 private:
  DWORD error_ = ERROR_SUCCESS;
  bool trailing_ = false;
  std::size_t size_ = 0;
  char native_[PATH_MAX];
};

// The folder of a native path, "." for a bare name, and the name in it.
std::string folderOf(std::string_view path);
const char* nameOf(const char* path);

// A file name as a search delivers it: backslash bytes become U+F05C. Gives the
// length written without terminator, or 0 if `size` bytes are too few.
std::size_t displayName(const char* native, char* buffer, std::size_t size);

// The Win32 code of an errno value that a call on `path` gave. Unlike
// errorFromErrno it tells a missing folder from a missing file in it.
DWORD errorOnPath(const NativePath& path, int error);

}  // namespace platform::native
