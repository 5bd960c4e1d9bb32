#pragma once
// Copying the content of one open file to another.

#include <sys/stat.h>
#include <sys/types.h>

#include "platform/copy_file.h"

namespace platform::native {

// Copies the bytes after the position of `from`, expected to be `size`, to the
// position of `to`. Holes are written as zeros. False, with errno, on failure; it
// is ECANCELED if `progress` has returned false.
bool copyBytes(int from, off_t size, int to, const CopyProgress& progress);

// Copies a whole file with the status `source` to a new one. File systems that can
// do so let both share their blocks. A hole stays one. Fails as copyBytes() does.
bool copyContent(int from, const struct stat& source, int to, const CopyProgress& progress);

}  // namespace platform::native
