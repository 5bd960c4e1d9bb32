#pragma once
// Writing over the content of a file that cannot be replaced.

#include <sys/stat.h>

#include "platform/copy_file.h"

namespace platform::native {

// Writes the whole content of `from`, which has `size` bytes, over that of `to`, which has the
// status `old`. Space that `to` lacks is reserved first, so that a full disk is noticed while the
// old content is complete. Set-id bits are removed before the first byte is written. False, with
// errno, on failure; network file systems can also report one when `to` is closed.
// Nothing ends the writing early: `progress` is called, and its result does not count.
bool overwriteContent(int from, off_t size, const struct stat& old, int to,
                      const CopyProgress& progress = {});

}  // namespace platform::native
