// Paths of the library and of other programs.

#include "platform/host_paths.h"

#include <filesystem/trees.h>

namespace FileSystem {

std::string nativePath(const char* path) { return platform::hostPath(path); }

std::string libraryPath(const char* path) { return platform::textOfHostPath(path); }

}  // namespace FileSystem
