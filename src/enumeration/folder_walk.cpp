#include "enumeration/folder_walk.h"

#include <algorithm>

#include "platform/file_identity.h"

namespace FileSystem::Detail {

bool FolderWalk::leadsBack() const {
  platform::FileIdentity own;
  if (!platform::fileIdentity(path_.c_str(), own)) return false;
  return std::any_of(levels_.begin(), levels_.end(), [&](std::size_t size) {
    platform::FileIdentity above;
    return platform::fileIdentity(path_.substr(0, size).c_str(), above) && above == own;
  });
}

}  // namespace FileSystem::Detail
