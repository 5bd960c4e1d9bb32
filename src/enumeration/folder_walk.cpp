#include "enumeration/folder_walk.h"

#include <algorithm>

#include "platform/file_identity.h"

namespace FileSystem::Detail {

std::vector<WIN32_FIND_DATAA> FolderWalk::foldersHere() const {
  std::vector<WIN32_FIND_DATAA> folders;
  for (Search search(path_ + '*', FindExSearchLimitToDirectories, namesOnly_); search.next();) {
    const char* const name = search.entry().cFileName;
    if (!search.isFolder() || lstrcmpA(name, ".") == 0 || lstrcmpA(name, "..") == 0) continue;
    folders.push_back(search.entry());
  }
  return folders;
}

bool FolderWalk::leadsBack() const {
  platform::FileIdentity own;
  if (!platform::fileIdentity(path_.c_str(), own)) return false;
  return std::any_of(levels_.begin(), levels_.end(), [&](std::size_t size) {
    platform::FileIdentity above;
    return platform::fileIdentity(path_.substr(0, size).c_str(), above) && above == own;
  });
}

}  // namespace FileSystem::Detail
