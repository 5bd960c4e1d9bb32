#pragma once
// Walks over a directory tree that delete its files and the directories that become empty, or that
// only list what would be deleted.

#include <functional>
#include <string>

#include "platform/open_directory.h"

namespace FileSystem::Detail {

// A file or link that a walk has reached.
struct TreeEntry {
  const platform::OpenDirectory& directory;  // its current entry
  const std::string& directoryPath;          // with separator at its end
  bool isAtTop;                              // directly in the start directory
};

struct TreeDeletion {
  unsigned int files = 0;  // files and links deleted
  bool topShrank = false;  // a directory directly below the start was removed
};

// Deletes the files and links of a tree that `selects` returns true for, and then every directory
// below the start that is empty. Nothing outside the tree is deleted, whatever other processes do
// to it meanwhile. `start` is a path that ends in a separator; the start directory itself stays.
TreeDeletion deleteFromTree(const std::string& start, platform::OpenDirectory::LastLink link,
                            const std::function<bool(const TreeEntry&)>& selects);

// Calls `visit` for the files and links that deleteFromTree() passes to its function, in the same
// order, and deletes nothing.
void visitTree(const std::string& start, platform::OpenDirectory::LastLink link,
               const std::function<void(const TreeEntry&)>& visit);

}  // namespace FileSystem::Detail
