// A tree of files as the library sees it, with the reason of each one that it leaves out.

#include <filesystem/trees.h>

#include <string>
#include <unordered_set>
#include <utility>

#include "enumeration/folder_walk.h"
#include "files/source_file.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"
#include "platform/file_identity.h"
#include "platform/win32.h"
#include "reporting/progress_relay.h"

namespace FileSystem {
namespace {

using Detail::Search;

class TreeListing {
 public:
  TreeListing(const std::string& start, const std::string& pattern, const Options& options)
      : pattern_(pattern),
        selectsAll_(pattern == "*" || pattern == "*.*"),
        hasFolders_(options.folders()),
        hasLinks_(options.links()),
        progress_(options.progress()),
        walk_(start, true, true, !options.links()) {}

  Report run() {
    walk_.run([this](const WIN32_FIND_DATAA&) { return visitFolder(); },
              [this](const Search& search) { visitFile(search); },
              [this](const Search& search) { visitEnd(search); });
    progress_.rethrow();
    if (progress_.isCancelled()) report_.reason = Reason::Cancelled;
    return std::move(report_);
  }

 private:
  bool visitFolder() {
    // The walk reports a folder whose path is too long.
    if (hasFolders_ && walk_.path().size() < Detail::PathText::kLongest) {
      add(std::string(walk_.relativePath()), Reason::None).isFolder = true;
    }
    return !progress_.isCancelled();
  }

  void visitFile(const Search& search) {
    // Reading a large folder takes long. The host can cancel that, too.
    constexpr int kInterval = 1000;
    name_ = search.entry().cFileName;
    if (++count_ % kInterval == 0) progress_.begin(name_);
    if (progress_.isCancelled() || !isSelected()) return;
    const std::string path = walk_.path() + name_;
    if (path.size() > Detail::PathText::kLongest) {
      add(relative(name_), Reason::PathTooLong);
      return;
    }
    if (hasLinks_ && search.isLink()) {
      add(relative(name_), Reason::None).isLink = true;
      return;
    }
    const Reason reason = search.canOpen(path.c_str()) ? Reason::None : reasonFor(path.c_str());
    // Another program has deleted it meanwhile.
    if (reason != Reason::Missing) add(relative(name_), reason);
  }

  // Reason::None if another program has released the file meanwhile.
  static Reason reasonFor(const char* path) {
    return platform::isNoFile(path) ? Reason::NotAFile : Detail::reasonForSource(path);
  }

  // Each folder is searched once for all names, and once for those of the pattern.
  bool isSelected() {
    if (selectsAll_) return true;
    if (!isSearched_) {
      Search search = Search::forNames(walk_.path() + pattern_);
      while (search.next()) selected_.insert(search.entry().cFileName);
      isSearched_ = true;
    }
    return selected_.count(name_) != 0;
  }

  void visitEnd(const Search& search) {
    selected_.clear();
    isSearched_ = false;
    for (const std::string& name : search.unlistedNames()) {
      add(relative(name), Reason::PathTooLong);
    }
    if (search.isComplete()) return;
    const Reason reason = walk_.failure(search);
    if (walk_.relativePath().empty()) {
      report_.reason = reason;
    } else {
      std::string name(walk_.relativePath());
      name.pop_back();
      add(std::move(name), reason).isFolder = true;
    }
  }

  std::string relative(const std::string& name) const {
    return std::string(walk_.relativePath()) + name;
  }
  ItemResult& add(std::string name, Reason reason) {
    ItemResult& item = report_.items.emplace_back();
    item.name = std::move(name);
    item.reason = reason;
    return item;
  }

  const std::string pattern_;
  const bool selectsAll_;
  const bool hasFolders_;
  const bool hasLinks_;
  Detail::ProgressRelay progress_;
  Detail::FolderWalk walk_;
  Report report_;
  std::string name_;  // of the entry that the walk is at
  int count_ = 0;
  bool isSearched_ = false;                   // the folder that the walk is in, for the pattern
  std::unordered_set<std::string> selected_;  // its names of the pattern
};

}  // namespace

Report listTree(const char* folder, const char* pattern, const Options& options) {
  // An empty text names no folder; with a separator it would be the root of the current drive.
  if (*folder == '\0') return {.reason = Reason::Missing, .items = {}};
  return TreeListing(Detail::withBackslash(folder), pattern, options).run();
}

}  // namespace FileSystem
