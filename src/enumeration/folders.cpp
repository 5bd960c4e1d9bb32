// The folders below a folder, depth first, parents before children.

#include <filesystem/enumeration.h>

#include <algorithm>

#include "enumeration/search.h"
#include "path/fixed_text.h"
#include "platform/file_identity.h"

namespace FileSystem {
namespace {

// A walk down a tree. It keeps one search open at a time, whatever the depth.
class FolderWalk {
 public:
  FolderWalk(std::string start, bool recursive)
      : path_(std::move(start)), startSize_(path_.size()), recursive_(recursive) {}

  // Calls `visit(entry)` for each folder; path() is then its path, without
  // trailing separator. The walk goes below the folder if it gives true.
  template <typename Visit>
  void run(Visit visit) {
    const std::size_t size = path_.size();
    levels_.push_back(size);
    for (const WIN32_FIND_DATAA& entry : foldersHere()) {
      path_.resize(size);
      path_ += entry.cFileName;
      const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if (isLink && leadsBack()) continue;
      if (!visit(entry) || !recursive_) continue;
      path_ += '\\';
      run(visit);
    }
    path_.resize(size);
    levels_.pop_back();
  }

  const std::string& path() const { return path_; }
  // The folder's path below the start.
  std::string_view relativePath() const { return std::string_view(path_).substr(startSize_); }
  // Whether the folder lies directly below the start.
  bool atTop() const { return levels_.size() == 1; }

 private:
  std::vector<WIN32_FIND_DATAA> foldersHere() const {
    std::vector<WIN32_FIND_DATAA> folders;
    for (Detail::Search search(path_ + '*', FindExSearchLimitToDirectories); search.next();) {
      const char* const name = search.entry().cFileName;
      if (!search.isFolder() || lstrcmpA(name, ".") == 0 || lstrcmpA(name, "..") == 0) continue;
      folders.push_back(search.entry());
    }
    return folders;
  }

  // Whether the folder is one that the walk is in.
  bool leadsBack() const {
    platform::FileIdentity own;
    if (!platform::fileIdentity(path_.c_str(), own)) return false;
    return std::any_of(levels_.begin(), levels_.end(), [&](std::size_t size) {
      platform::FileIdentity above;
      return platform::fileIdentity(path_.substr(0, size).c_str(), above) && above == own;
    });
  }

  std::string path_;
  const std::size_t startSize_;
  const bool recursive_;
  std::vector<std::size_t> levels_;  // lengths of the paths that the walk is in
};

FILE_INFORMATION recordOf(const WIN32_FIND_DATAA& entry, const FolderWalk& walk) {
  FILE_INFORMATION information = Detail::informationOf(entry);
  const Detail::FixedText<sizeof(information.cFileName)> name(walk.relativePath());
  std::copy_n(name.c_str(), name.view().size() + 1, information.cFileName);
  return information;
}

}  // namespace

std::uint64_t EnumFolders(std::vector<FILE_INFORMATION>& result, const char* folder,
                          int recursive) {
  const std::size_t before = result.size();
  FolderWalk walk(folder, recursive != 0);
  walk.run([&](const WIN32_FIND_DATAA& entry) {
    result.push_back(recordOf(entry, walk));
    return true;
  });
  return result.size() - before;
}

std::uint64_t EnumFolders(std::vector<std::string>& result, const char* folder, int recursive) {
  const std::size_t before = result.size();
  FolderWalk walk(Detail::withBackslash(folder), recursive != 0);
  walk.run([&](const WIN32_FIND_DATAA&) {
    result.push_back(walk.path() + '\\');
    return true;
  });
  return result.size() - before;
}

std::uint64_t EnumFoldersEx(std::vector<FILE_INFORMATION>& result, const char* folder,
                            const boost::function1<int, const char*>& filter, int recursive) {
  const std::size_t before = result.size();
  // What stays if the filter throws: all but the branch that is under way.
  std::size_t complete = before;
  FolderWalk walk(folder, recursive != 0);
  try {
    walk.run([&](const WIN32_FIND_DATAA& entry) {
      if (walk.atTop()) complete = result.size();
      if (filter(walk.path().c_str()) == 0) return false;
      result.push_back(recordOf(entry, walk));
      if (walk.atTop()) complete = result.size();
      return true;
    });
  } catch (...) {
    result.resize(complete);
    throw;
  }
  return result.size() - before;
}

}  // namespace FileSystem
