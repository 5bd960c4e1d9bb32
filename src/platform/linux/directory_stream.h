#pragma once
// Owner of a directory stream.

#include <dirent.h>

#include <memory>

namespace platform::native {

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

using DirectoryStream = std::unique_ptr<DIR, DirectoryCloser>;

}  // namespace platform::native
