#pragma once
// A walk through the folders below a folder, depth first, parents before children.

#include <filesystem/results.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "enumeration/search.h"

namespace FileSystem::Detail {

// Keeps one search open at a time, whatever the depth. Follows links to folders, except those that
// form a cycle, or none.
class FolderWalk {
 public:
  // `start` is a prefix of the paths of the folders below it, usually a folder text that ends in a
  // separator. With `namesOnly`, the entries are those of a search for names. A link that is not
  // followed is none of the folders, but one of the other entries.
  FolderWalk(std::string start, bool recursive, bool namesOnly = false, bool followsLinks = true)
      : path_(std::move(start)),
        startSize_(path_.size()),
        recursive_(recursive),
        namesOnly_(namesOnly),
        followsLinks_(followsLinks) {}

  // Calls `visit(entry)` for each folder, while path() is its path without trailing separator. The
  // walk descends into the folder if `visit` returns true.
  template <typename Visit>
  void run(Visit visit) {
    const auto ignore = [](const Search&) {};
    walk(FindExSearchLimitToDirectories, visit, ignore, ignore);
  }

  // Also calls `file(search)` for each other entry, while path() is the path of its folder with
  // separator. The entries of a folder come before those of its subfolders.
  template <typename Visit, typename File>
  void run(Visit visit, File file) {
    run(visit, file, [](const Search&) {});
  }

  // Also calls `end(search)` at the end of each folder, or where it cannot be read further.
  template <typename Visit, typename File, typename End>
  void run(Visit visit, File file, End end) {
    walk(FindExSearchNameMatch, visit, file, end);
  }

  const std::string& path() const { return path_; }
  // The path of the folder above, with separator.
  std::string_view parent() const { return std::string_view(path_).substr(0, levels_.back()); }
  // The path without the start.
  std::string_view relativePath() const { return std::string_view(path_).substr(startSize_); }
  // Why the search of the folder at path() has ended before its end.
  Reason failure(const Search& search) const;
  // True if the folder is directly below the start.
  bool atTop() const { return levels_.size() == 1; }

 private:
  template <typename Visit, typename File, typename End>
  void walk(FINDEX_SEARCH_OPS operation, Visit& visit, const File& file, const End& end) {
    const std::size_t size = path_.size();
    levels_.push_back(size);
    for (const WIN32_FIND_DATAA& entry : readFolder(operation, file, end)) {
      // A plain join: with Boost.Format listing the folders of a tree takes a fifth longer.
      path_.resize(size);
      path_ += entry.cFileName;
      const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if (isLink && isCycle()) continue;
      if (!visit(entry) || !recursive_) continue;
      path_ += '\\';
      walk(operation, visit, file, end);
    }
    levels_.pop_back();
  }

  // Passes the files of the folder at path() to `file`, and returns its subfolders.
  template <typename File, typename End>
  std::vector<WIN32_FIND_DATAA> readFolder(FINDEX_SEARCH_OPS operation, const File& file,
                                           const End& end) const {
    std::vector<WIN32_FIND_DATAA> folders;
    Search search(path_ + '*', operation, namesOnly_);
    while (search.next()) {
      const std::string_view name = search.entry().cFileName;
      if (!search.isFolder() || (!followsLinks_ && search.isLink())) {
        file(search);
      } else if (name != "." && name != "..") {
        folders.push_back(search.entry());
      }
    }
    end(search);
    return folders;
  }

  // True if the folder at path() is one that the walk is in.
  bool isCycle() const;

  std::string path_;
  const std::size_t startSize_;
  const bool recursive_;
  const bool namesOnly_;
  const bool followsLinks_;
  std::vector<std::size_t> levels_;  // sizes of the paths of the folders that the walk is in
};

}  // namespace FileSystem::Detail
