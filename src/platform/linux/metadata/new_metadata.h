#pragma once
// Giving new files and directories the permissions and times of archives' entries.
//
// A file never has more permissions than it is to have in the end: it is created with them, less
// those of the umask, and gets the rest when it is complete. A directory can be entered by its owner
// until all in it is complete.

#include <sys/stat.h>

#include "platform/file_metadata.h"

namespace platform::native {

// Returns the mode with which a file is created. `usual` is that of files without metadata.
inline mode_t creationMode(const NewMetadata& metadata, mode_t usual) {
  constexpr mode_t kPermissions = 0777;
  return metadata.mode ? *metadata.mode & kPermissions : usual;
}

// Gives an open file the time of its last write. `stored` is a time that the file system has stored
// before. False, with errno, on failure. A file system that lets this user set no time is none.
bool applyLastWrite(int descriptor, const NewMetadata& metadata, const struct timespec& stored);

// Gives an open file that has the mode `current` the permissions, if there are any. False, with
// errno, on failure. A file system without permissions is none.
bool applyMode(int descriptor, const std::optional<std::uint32_t>& mode, mode_t current);

}  // namespace platform::native
