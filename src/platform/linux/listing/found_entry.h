#pragma once
// The entry that a search returned last, for work relative to its open folder.

#include "platform/linux/win32_linux.h"

namespace platform::native {

struct FoundEntry {
  int folder = -1;             // descriptor, owned by the search
  const char* name = nullptr;  // native; valid until the next entry
  bool isRegular = false;      // listed as a regular file; false if the type is unknown
};

// The name is null if the search was for a single name, without an open folder,
// or has returned its last entry.
FoundEntry lastFound(HANDLE search);

}  // namespace platform::native
