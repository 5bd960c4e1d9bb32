#pragma once
// Windows path text to native path: separators, drives, shares, U+F05C.

#include <climits>
#include <string>
#include <string_view>

#include "platform/linux/win32_linux.h"

namespace platform::native {

// U+F05C in UTF-8: a backslash that belongs to a name.
inline constexpr std::string_view kBackslashInName = "\xEF\x81\x9C";

// A native path made from a path text, in a buffer of its own, without the heap.
// The components `.` and `..` are resolved in the text, as Windows does: links
// and missing folders before a `..` do not matter. Leading `..` of a relative
// path remain.
class NativePath {
 public:
  // Null and empty texts, unmapped drives and shares, and texts that are too long
  // are not valid; error() is the Win32 code then.
  explicit NativePath(const char* text);

  bool valid() const { return error_ == ERROR_SUCCESS; }
  DWORD error() const { return error_; }
  // True if the text ended in a separator, so that it can only name a folder.
  // That separator is not part of the native path.
  bool hadTrailingSeparator() const { return trailing_; }
  // True for the root of a drive or share.
  bool isRoot() const { return isAbsolute_ && size_ == rootSize_; }
  const char* c_str() const { return native_; }
  // The length of c_str() in bytes.
  std::size_t size() const { return size_; }

 private:
  bool takeRoot(std::string_view& text);
  bool append(std::string_view component);
  void removeLast();

  DWORD error_ = ERROR_SUCCESS;
  bool trailing_ = false;
  bool isAbsolute_ = false;
  std::size_t size_ = 0;
  std::size_t rootSize_ = 0;  // of the part that no `..` removes
  char native_[PATH_MAX];
};

// The folder of a native path, "." for a bare name, and the name in it.
std::string folderOf(std::string_view path);
const char* nameOf(const char* path);

// True for the names `.` and `..`.
inline bool isDots(const char* name) {
  if (name[0] != '.') return false;
  return name[1] == '\0' || (name[1] == '.' && name[2] == '\0');
}

// Writes a file name as searches return it: each backslash becomes U+F05C. Returns the length
// written without terminator, or 0 if `size` bytes are too few or if the name itself contains
// U+F05C, since no path text can then name the file.
std::size_t displayName(const char* native, char* buffer, std::size_t size);

// Returns the Win32 code of an errno value that a call on `path` left. Unlike
// errorFromErrno it distinguishes a missing folder from a missing file in it.
DWORD errorOnPath(const NativePath& path, int error);

}  // namespace platform::native
