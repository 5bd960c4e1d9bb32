#pragma once
// Symbolic links that are created, also in the place of files and of other links.

#include <sys/stat.h>

#include <string>

#include "platform/file_metadata.h"

namespace platform::native {

struct NewLink {
  std::string target;  // not empty, without zero bytes
  NewMetadata metadata;
};

// Creates the link in the open directory, with its time. False, with errno, on failure: EEXIST if the
// name is in use.
bool createLink(int directory, const char* name, const NewLink& link);

// Puts the link in the place of the file or link of that name, which has the status `old`, in one
// step. False, with errno, on failure.
bool replaceByLink(int directory, const char* name, const struct stat& old, const NewLink& link);

}  // namespace platform::native
