#pragma once
// One search of a folder, and what all enumerations do with its entries.

#include <filesystem/file_information.h>

#include <string>

#include "platform/probe_open.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace FileSystem::Detail {

class Search {
 public:
  // With `namesOnly` of an entry only its name and whether it is a folder, or a
  // link to one, need be told.
  explicit Search(const std::string& pattern, FINDEX_SEARCH_OPS operation = FindExSearchNameMatch,
                  bool namesOnly = false)
      : handle_(FindFirstFileExA(pattern.c_str(), FindExInfoStandard, &entry_, operation, nullptr,
                                 namesOnly ? FIND_NAMES_ONLY : 0)) {}
  static Search forNames(const std::string& pattern) {
    return Search(pattern, FindExSearchNameMatch, true);
  }

  // Goes to the next entry, at first to the first one. False at the end, and if
  // nothing could be searched.
  bool next() {
    if (!handle_) return false;
    if (!started_) return started_ = true;
    return FindNextFileA(handle_.get(), &entry_) != FALSE;
  }
  const WIN32_FIND_DATAA& entry() const { return entry_; }
  bool isFolder() const { return (entry_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
  // Whether the entry, a file of that full path, can be opened for reading.
  bool canOpen(const char* path) const { return platform::probeFound(handle_.get(), path); }

 private:
  WIN32_FIND_DATAA entry_{};
  platform::SearchHandle handle_;
  bool started_ = false;
};

FILE_INFORMATION informationOf(const WIN32_FIND_DATAA& entry);

}  // namespace FileSystem::Detail
