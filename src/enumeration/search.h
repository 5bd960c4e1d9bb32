#pragma once
// A search of a folder.

#include <filesystem/file_information.h>

#include <string>
#include <vector>

#include "platform/probe_open.h"
#include "platform/symbolic_links.h"
#include "platform/unique_handle.h"
#include "platform/unlisted_names.h"
#include "platform/win32.h"

namespace FileSystem::Detail {

class Search {
 public:
  // With `namesOnly`, the record of an entry may have no more than its name and the attributes that
  // mark folders and links.
  explicit Search(const std::string& pattern, FINDEX_SEARCH_OPS operation = FindExSearchNameMatch,
                  bool namesOnly = false)
      : handle_(FindFirstFileExA(pattern.c_str(), FindExInfoStandard, &entry_, operation, nullptr,
                                 namesOnly ? FIND_NAMES_ONLY : 0)),
        error_(handle_ ? ERROR_SUCCESS : GetLastError()) {}
  static Search forNames(const std::string& pattern) {
    return Search(pattern, FindExSearchNameMatch, true);
  }

  // Advances to the next entry, at first to the first one. Returns false at the end, and if the
  // search could not be started.
  bool next() {
    if (!handle_) return false;
    if (!started_) return started_ = true;
    if (FindNextFileA(handle_.get(), &entry_) != FALSE) return true;
    error_ = GetLastError();
    return false;
  }
  // After next() has returned false: reports whether there are no more entries. If not, the folder
  // cannot be read.
  bool isComplete() const {
    return error_ == ERROR_NO_MORE_FILES || error_ == ERROR_FILE_NOT_FOUND;
  }
  // The error that has ended the search.
  DWORD error() const { return error_; }
  // The names that the search has passed over, since they are too long for an entry.
  std::vector<std::string> unlistedNames() const {
    return handle_ ? platform::unlistedNames(handle_.get()) : std::vector<std::string>();
  }
  const WIN32_FIND_DATAA& entry() const { return entry_; }
  bool isFolder() const { return (entry_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
  // True if the entry is a symbolic link, as far as links are not followed (symbolic_links.h).
  bool isLink() const { return platform::isFoundLink(handle_.get()); }
  // Reports whether the entry, a file with this full path, can be opened for reading.
  bool canOpen(const char* path) const { return platform::probeFound(handle_.get(), path); }

 private:
  WIN32_FIND_DATAA entry_{};
  platform::SearchHandle handle_;
  DWORD error_;
  bool started_ = false;
};

FILE_INFORMATION informationOf(const WIN32_FIND_DATAA& entry);

}  // namespace FileSystem::Detail
