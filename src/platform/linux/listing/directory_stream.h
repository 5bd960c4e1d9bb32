#pragma once
// Owner of a directory stream.

#include <dirent.h>

#include <memory>

#include "platform/linux/opening/descriptor.h"

namespace platform::native {

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

using DirectoryStream = std::unique_ptr<DIR, DirectoryCloser>;

// Makes a stream that owns the descriptor. Null, with errno, if the descriptor is not open or on
// failure.
inline DirectoryStream streamOf(Descriptor descriptor) {
  DirectoryStream stream(descriptor ? fdopendir(descriptor.get()) : nullptr);
  if (stream) descriptor.release();
  return stream;
}

// Opens the directory of that path. Null, with errno, on failure. It takes a system call less than
// a stream of a descriptor.
DirectoryStream openDirectory(const char* path);

}  // namespace platform::native
