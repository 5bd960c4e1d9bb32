#pragma once
// Copying one file, with progress.

#include <cstdint>
#include <functional>

namespace platform {

// Receives how many bytes from the start of a file are copied, after each block and at the end. A
// copy that takes another way after the first has failed begins again at 0. Returning false ends
// the copy with ERROR_REQUEST_ABORTED.
using CopyProgress = std::function<bool(std::uint64_t)>;

// Copies a file as CopyFileA does. With `progress`, an existing target is the old file or complete
// afterwards, on Windows too, unless it has several names, or others hold it and share writing. Such
// a file is overwritten to its end, whatever `progress` returns.
bool copyFile(const char* source, const char* target, bool failIfExists,
              const CopyProgress& progress = {});

}  // namespace platform
