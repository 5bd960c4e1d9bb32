#pragma once
// Deletion of files in a directory tree, and of the directories that become empty.

#include <cstddef>
#include <functional>
#include <string>

#include "platform/open_directory.h"

namespace FileSystem::Detail {

// A file or link that a deletion has reached.
struct TreeEntry {
  const platform::OpenDirectory& directory;  // its current entry
  std::size_t pathSize;                      // bytes of the directory's path, with separator
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

}  // namespace FileSystem::Detail
