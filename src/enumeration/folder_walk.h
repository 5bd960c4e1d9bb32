#pragma once
// Walking the folders below a folder, depth first, parents before children.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "enumeration/search.h"

namespace FileSystem::Detail {

// A walk down a tree. It keeps one search open at a time, whatever the depth.
class FolderWalk {
 public:
  // The start is a folder text that ends in a separator.
  // Where `namesOnly`, the entries are those of a search for names.
  FolderWalk(std::string start, bool recursive, bool namesOnly = false)
      : path_(std::move(start)),
        startSize_(path_.size()),
        recursive_(recursive),
        namesOnly_(namesOnly) {}

  // Calls `visit(entry)` for each folder; path() is then its path, without
  // trailing separator. The walk goes below the folder if it gives true.
  template <typename Visit>
  void run(Visit visit) {
    walk(FindExSearchLimitToDirectories, visit, [](Search&) {});
  }

  // As run, and calls `file(search)` for each other entry while path() is its
  // folder's, with its separator: first those of a folder, then those of the
  // folders below it.
  template <typename Visit, typename File>
  void run(Visit visit, File file) {
    walk(FindExSearchNameMatch, visit, file);
  }

  const std::string& path() const { return path_; }
  // The folder's path below the start.
  std::string_view relativePath() const { return std::string_view(path_).substr(startSize_); }
  // Whether the folder lies directly below the start.
  bool atTop() const { return levels_.size() == 1; }

 private:
  template <typename Visit, typename File>
  void walk(FINDEX_SEARCH_OPS operation, Visit& visit, File file) {
    const std::size_t size = path_.size();
    levels_.push_back(size);
    for (const WIN32_FIND_DATAA& entry : readFolder(operation, file)) {
      path_.resize(size);
      path_ += entry.cFileName;
      const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if (isLink && isCycle()) continue;
      if (!visit(entry) || !recursive_) continue;
      path_ += '\\';
      walk(operation, visit, file);
    }
    path_.resize(size);
    levels_.pop_back();
  }

  // The folders of the folder at path(), once its files were passed on.
  template <typename File>
  std::vector<WIN32_FIND_DATAA> readFolder(FINDEX_SEARCH_OPS operation, File& file) const {
    std::vector<WIN32_FIND_DATAA> folders;
    for (Search search(path_ + '*', operation, namesOnly_); search.next();) {
      const std::string_view name = search.entry().cFileName;
      if (!search.isFolder()) {
        file(search);
      } else if (name != "." && name != "..") {
        folders.push_back(search.entry());
      }
    }
    return folders;
  }

  // Whether the folder is one that the walk is in.
  bool isCycle() const;

  std::string path_;
  const std::size_t startSize_;
  const bool recursive_;
  const bool namesOnly_;
  std::vector<std::size_t> levels_;  // lengths of the paths that the walk is in
};

}  // namespace FileSystem::Detail
