#include "files/tree_deletion.h"

#include <cstring>
#include <utility>
#include <vector>

namespace FileSystem::Detail {
namespace {

using platform::OpenDirectory;

struct Subdirectory {
  std::string storedName;
  std::size_t pathSize;
};

// A directory that the walk is in.
struct Level {
  OpenDirectory directory;
  Subdirectory self;
  std::vector<Subdirectory> pending{};
};

// Keeps its own stack, because a tree may be deeper than the call stack.
class Walk {
 public:
  explicit Walk(const std::function<bool(const TreeEntry&)>& selects) : selects_(selects) {}

  TreeDeletion run(OpenDirectory start, std::size_t pathSize) {
    enter({std::move(start), {{}, pathSize}});
    while (!levels_.empty()) {
      if (levels_.back().pending.empty()) {
        leave();
      } else {
        descend();
      }
    }
    return result_;
  }

 private:
  void enter(Level level) {
    levels_.push_back(std::move(level));
    Level& current = levels_.back();
    while (current.directory.next()) {
      if (current.directory.isDirectory()) {
        const std::size_t nameSize = std::strlen(current.directory.name());
        current.pending.push_back(
            {current.directory.storedName(), current.self.pathSize + nameSize + 1});
      } else if (selects_({current.directory, current.self.pathSize, levels_.size() == 1}) &&
                 current.directory.deleteEntry()) {
        ++result_.files;
      }
    }
  }

  void descend() {
    Level& current = levels_.back();
    Subdirectory next = std::move(current.pending.back());
    current.pending.pop_back();
    OpenDirectory directory(current.directory, next.storedName);
    if (directory) {
      enter({std::move(directory), std::move(next)});
    } else {
      remove(next.storedName);
    }
  }

  void leave() {
    const std::string name = std::move(levels_.back().self.storedName);
    levels_.pop_back();
    if (!levels_.empty()) remove(name);
  }

  // Removes a subdirectory of the current directory.
  void remove(const std::string& storedName) {
    const bool removed = levels_.back().directory.removeDirectory(storedName);
    if (removed && levels_.size() == 1) result_.topShrank = true;
  }

  const std::function<bool(const TreeEntry&)>& selects_;
  std::vector<Level> levels_;
  TreeDeletion result_;
};

}  // namespace

TreeDeletion deleteFromTree(const std::string& start, OpenDirectory::LastLink link,
                            const std::function<bool(const TreeEntry&)>& selects) {
  return Walk(selects).run(OpenDirectory(start, link), start.size());
}

}  // namespace FileSystem::Detail
