#include "files/tree_deletion.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace FileSystem::Detail {
namespace {

using platform::OpenDirectory;

struct Subdirectory {
  std::string name;  // as paths spell it
  std::string storedName;
};

// A directory that the walk is in.
struct Level {
  OpenDirectory directory;
  std::string storedName;
  std::size_t pathSize;  // bytes of its path, with separator
  std::vector<Subdirectory> pending{};
};

// Keeps its own stack, because a tree may be deeper than the call stack.
class Walk {
 public:
  enum class Emptied { Removed, Kept };

  // `emptied` is what becomes of directories that are empty after their visit.
  Walk(const std::function<bool(const TreeEntry&)>& selects, Emptied emptied)
      : selects_(selects), emptied_(emptied) {}

  TreeDeletion run(OpenDirectory start, const std::string& path) {
    path_ = path;
    enter(std::move(start), {});
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
  // `path_` is that of the directory.
  void enter(OpenDirectory directory, std::string storedName) {
    levels_.push_back({std::move(directory), std::move(storedName), path_.size()});
    Level& current = levels_.back();
    while (current.directory.next()) {
      if (current.directory.isDirectory()) {
        current.pending.push_back({current.directory.name(), current.directory.storedName()});
      } else if (selects_({current.directory, path_, levels_.size() == 1}) &&
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
      path_ += next.name;
      path_ += '\\';
      enter(std::move(directory), std::move(next.storedName));
    } else {
      remove(next.storedName);
    }
  }

  void leave() {
    const std::string storedName = std::move(levels_.back().storedName);
    levels_.pop_back();
    if (levels_.empty()) return;
    path_.resize(levels_.back().pathSize);
    remove(storedName);
  }

  // Removes a subdirectory of the current directory.
  void remove(const std::string& storedName) {
    if (emptied_ == Emptied::Kept) return;
    const bool removed = levels_.back().directory.removeDirectory(storedName);
    if (removed && levels_.size() == 1) result_.topShrank = true;
  }

  const std::function<bool(const TreeEntry&)>& selects_;
  const Emptied emptied_;
  std::vector<Level> levels_;
  std::string path_;  // of the current directory, with separator
  TreeDeletion result_;
};

}  // namespace

TreeDeletion deleteFromTree(const std::string& start, OpenDirectory::LastLink link,
                            const std::function<bool(const TreeEntry&)>& selects) {
  return Walk(selects, Walk::Emptied::Removed).run(OpenDirectory(start, link), start);
}

void visitTree(const std::string& start, OpenDirectory::LastLink link,
               const std::function<void(const TreeEntry&)>& visit) {
  const std::function<bool(const TreeEntry&)> selectsNone = [&](const TreeEntry& entry) {
    visit(entry);
    return false;
  };
  Walk(selectsNone, Walk::Emptied::Kept).run(OpenDirectory(start, link), start);
}

}  // namespace FileSystem::Detail
