#include "enumeration/folder_walk.h"

#include <algorithm>

#include "platform/file_identity.h"

namespace FileSystem::Detail {

bool FolderWalk::isCycle() const {
  platform::FileIdentity own;
  const auto isOwn = [&](std::size_t size) {
    // An empty path and a drive alone name the current directory, and so does the dot after them.
    const std::string level = path_.substr(0, size) + '.';
    platform::FileIdentity above;
    return platform::fileIdentity(level.c_str(), above) && above == own;
  };
  return platform::fileIdentity(path_.c_str(), own) &&
         std::any_of(levels_.begin(), levels_.end(), isOwn);
}

}  // namespace FileSystem::Detail
