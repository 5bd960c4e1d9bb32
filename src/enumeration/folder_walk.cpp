#include "enumeration/folder_walk.h"

#include <algorithm>

#include "platform/file_identity.h"

namespace FileSystem::Detail {

bool FolderWalk::isCycle() const {
  platform::FileIdentity own;
  if (!platform::fileIdentity(path_.c_str(), own)) return false;
  return std::any_of(levels_.begin(), levels_.end(), [&](std::size_t size) {
    // An empty path and a drive alone name the current directory.
    std::string level = path_.substr(0, size);
    if (level.empty() || level.ends_with(':')) level += '.';
    platform::FileIdentity above;
    return platform::fileIdentity(level.c_str(), above) && above == own;
  });
}

}  // namespace FileSystem::Detail
