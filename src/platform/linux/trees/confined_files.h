#pragma once
// Files and links in an open directory, new ones and such that replace others.

#include <sys/stat.h>

#include "platform/confined_directory.h"
#include "platform/linux/trees/new_link.h"

namespace platform::native {

// Creates a file with the content and the metadata, and sets `status` to the status of the new file.
// False with errno EEXIST, and `fill` not called, if the name is in use; with another errno on another
// failure.
bool writeNew(int directory, const char* name, const ConfinedDirectory::Fill& fill,
              const NewMetadata& metadata, struct stat& status);

// Replaces the file or link of that name, which has the status `old`. A link itself is replaced,
// never the file that it leads to. False, with the error, on failure.
bool replaceExisting(int directory, const char* name, struct stat old,
                     const ConfinedDirectory::Fill& fill, const NewMetadata& metadata);

// Replaces the file or link of that name by a link.
bool replaceExistingByLink(int directory, const char* name, struct stat old, const NewLink& link);

}  // namespace platform::native
