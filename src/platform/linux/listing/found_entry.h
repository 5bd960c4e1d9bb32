#pragma once
// What a search found: the entry that it returned last, for work relative to its open folder, and
// the entries that it cannot return.

#include <string>
#include <vector>

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

// Reports whether the entry that the search found last is a symbolic link.
bool isLastFoundLink(HANDLE search);

// The shown names of the entries that the search has passed over because they are too long for a
// record.
const std::vector<std::string>& namesPassedOver(HANDLE search);

}  // namespace platform::native
