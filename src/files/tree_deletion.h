#pragma once
// A walk over a directory tree that can delete its files and the directories that become empty.

#include <filesystem/results.h>

#include <string>

#include "platform/open_directory.h"
#include "platform/win32.h"

namespace FileSystem::Detail {

// A file or link that a walk has reached.
struct TreeEntry {
  platform::OpenDirectory& directory;  // its current entry
  const std::string& directoryPath;    // below the start, with separator at its end
  bool isAtTop;                        // directly in the start directory

  // The path of the entry below the start.
  std::string path() const;
};

enum class Visit {
  Deleted,  // nothing has the entry's name any more
  Kept,
  Last,  // the walk is to end
};

// What a walk does with the files of a tree.
class TreeVisitor {
 public:
  TreeVisitor() = default;
  TreeVisitor(const TreeVisitor&) = delete;
  TreeVisitor& operator=(const TreeVisitor&) = delete;
  virtual ~TreeVisitor() = default;

  // Receives the path below the start of a directory that is to be listed. Returning false ends the
  // walk.
  virtual bool enter(const std::string& path) = 0;
  // Receives a file or link, which it may delete.
  virtual Visit visit(const TreeEntry& entry) = 0;
  // Receives a directory below the start that cannot be listed, or cannot be removed although the
  // walk has left nothing in it.
  virtual void fail(const std::string& path, Reason reason) = 0;
};

// What is done with the directories below the start that are empty after their visit.
enum class Emptied { Removed, Kept };

struct TreeWalk {
  Reason reason = Reason::None;  // why the start directory could not be listed
  bool topShrank = false;        // a directory directly below it was removed
  bool isEmptied = false;        // the walk has left nothing in it
};

// Returns the reason for the error of removing a directory in which nothing was left.
Reason removalFailure(DWORD error);

// Visits the files and links of a tree. Nothing outside the tree is deleted, whatever other
// processes do to it meanwhile. `start` is a path that ends in a separator; the start directory
// itself stays.
TreeWalk walkTree(const std::string& start, platform::OpenDirectory::LastLink link, Emptied emptied,
                  TreeVisitor& visitor);

}  // namespace FileSystem::Detail
