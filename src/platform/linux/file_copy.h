#pragma once
// A copy of one file to the name of another, for CopyFileA and replaceFile.

#include <sys/stat.h>

#include <string>

#include "platform/linux/descriptor.h"
#include "platform/linux/native_path.h"
#include "platform/unique_handle.h"

namespace platform::native {

struct Source {
  int descriptor;
  struct stat status;
};

struct Target {
  std::string path;  // native, behind all links
  bool exists = false;
  struct stat status {};
  Descriptor held;  // keeps writers out of a file that is to be replaced
};

bool isSameFile(const struct stat& a, const struct stat& b);

bool openSource(const char* text, platform::FileHandle& handle, Source& source);

// Looks at what has the target's name now. False, with the error, if it cannot
// be replaced by a copy of the source.
bool examine(const NativePath& path, const Source& source, bool failIfExists, Target& target);

// One attempt. False with EEXIST, and nothing read, if the target is there after
// all.
bool copyTo(const Source& source, const Target& target);

// The name that a copy has in the instant before it takes its target's. It is
// the same until the target is replaced, so that the next copy, and the next
// opening of an archive, finds and removes what a process that was killed in that
// instant left.
std::string temporaryName(const Target& target);

}  // namespace platform::native
