#include "files/tree_deletion.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "files/folder_failure.h"
#include "platform/win32.h"
#include "reporting/reasons.h"

namespace FileSystem::Detail {
namespace {

using platform::OpenDirectory;

// The name of the current entry. One that no path can name is shown as it is stored.
std::string nameOf(const OpenDirectory& directory) {
  std::string name = directory.name();
  return name.empty() ? directory.storedName() : name;
}

struct Subdirectory {
  std::string name;
  std::string storedName;
};

// A directory that the walk is in.
struct Level {
  OpenDirectory directory;
  std::string storedName;
  std::size_t pathSize;  // bytes of its path, with separator
  std::vector<Subdirectory> pending{};
  bool isEmptied = true;  // nothing remains of what was visited
};

// Keeps its own stack, because a tree may be deeper than the call stack.
class Walk {
 public:
  Walk(TreeVisitor& visitor, Emptied emptied) : visitor_(visitor), emptied_(emptied) {}
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;
  // Each directory refers to the one above it.
  ~Walk() {
    while (!levels_.empty()) levels_.pop_back();
  }

  TreeWalk run(OpenDirectory start) {
    bool continues = enter(std::move(start), {});
    while (continues && !levels_.empty()) {
      if (levels_.back().pending.empty()) {
        leave();
      } else {
        continues = descend();
      }
    }
    return result_;
  }

 private:
  // `path_` is that of the directory. Returns false at the end of the walk.
  bool enter(OpenDirectory directory, std::string storedName) {
    if (!visitor_.enter(ownPath())) return false;
    levels_.push_back({std::move(directory), std::move(storedName), path_.size()});
    Level& current = levels_.back();
    while (current.directory.next()) {
      if (current.directory.isDirectory()) {
        current.pending.push_back({nameOf(current.directory), current.directory.storedName()});
        continue;
      }
      const Visit visit = visitor_.visit({current.directory, path_, levels_.size() == 1});
      if (visit == Visit::Last) return false;
      if (visit == Visit::Kept) current.isEmptied = false;
    }
    if (!current.directory.isComplete()) {
      current.isEmptied = false;
      visitor_.fail(ownPath(), Reason::ReadFailed);
    }
    return true;
  }

  bool descend() {
    Level& current = levels_.back();
    Subdirectory next = std::move(current.pending.back());
    current.pending.pop_back();
    OpenDirectory directory(current.directory, next.storedName);
    const DWORD error = directory ? ERROR_SUCCESS : GetLastError();
    path_ += next.name;
    path_ += '\\';
    if (directory) return enter(std::move(directory), std::move(next.storedName));
    remove(next.storedName, error, true);
    path_.resize(current.pathSize);
    return true;
  }

  void leave() {
    const std::string storedName = std::move(levels_.back().storedName);
    const bool isEmptied = levels_.back().isEmptied;
    levels_.pop_back();
    if (levels_.empty()) {
      result_.isEmptied = isEmptied;
      return;
    }
    remove(storedName, ERROR_SUCCESS, isEmptied);
    path_.resize(levels_.back().pathSize);
  }

  // Removes the subdirectory at `path_` of the current directory. `listError` is the error of its
  // listing, and `isEmptied` says that the walk has left nothing in it.
  void remove(const std::string& storedName, DWORD listError, bool isEmptied) {
    if (emptied_ == Emptied::Removed && levels_.back().directory.removeDirectory(storedName)) {
      if (levels_.size() == 1) result_.topShrank = true;
      return;
    }
    const DWORD removeError = emptied_ == Emptied::Removed ? GetLastError() : ERROR_SUCCESS;
    // Another process may have removed it, or put a link there.
    if (removeError == ERROR_FILE_NOT_FOUND || removeError == ERROR_DIRECTORY) return;
    levels_.back().isEmptied = false;
    if (listError != ERROR_SUCCESS) {
      visitor_.fail(ownPath(), reasonOfError(listError));
    } else if (isEmptied && removeError != ERROR_SUCCESS) {
      visitor_.fail(ownPath(), removalFailure(removeError));
    }
  }

  // The path of the current directory without separator.
  std::string ownPath() const { return path_.substr(0, path_.size() - (path_.empty() ? 0 : 1)); }

  TreeVisitor& visitor_;
  const Emptied emptied_;
  std::vector<Level> levels_;
  std::string path_;  // of the current directory below the start, with separator
  TreeWalk result_;
};

}  // namespace

// Something in an emptied directory is from another process.
Reason removalFailure(DWORD error) {
  return error == ERROR_DIR_NOT_EMPTY ? Reason::InUse : reasonOfError(error);
}

std::string TreeEntry::path() const { return directoryPath + nameOf(directory); }

TreeWalk walkTree(const std::string& start, OpenDirectory::LastLink link, Emptied emptied,
                  TreeVisitor& visitor) {
  OpenDirectory directory(start, link);
  if (!directory) return {.reason = folderFailure(start, GetLastError())};
  return Walk(visitor, emptied).run(std::move(directory));
}

}  // namespace FileSystem::Detail
