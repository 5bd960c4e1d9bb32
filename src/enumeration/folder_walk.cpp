#include "enumeration/folder_walk.h"

#include <algorithm>

#include "path/fixed_text.h"
#include "platform/file_identity.h"
#include "reporting/reasons.h"

namespace FileSystem::Detail {

Reason FolderWalk::failure(const Search& search) const {
  if (path_.size() > PathText::kLongest) return Reason::PathTooLong;
  // Systems differ in the error of a file that is used as a folder.
  const DWORD attributes = GetFileAttributesA(path_.substr(0, path_.size() - 1).c_str());
  const bool isFile =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  return isFile ? Reason::NotAFolder : reasonOfError(search.error(), Reason::ReadFailed);
}

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
