// Lists of the folders below a folder, depth first, parents before children.

#include <filesystem/enumeration.h>

#include <cstring>

#include "enumeration/folder_walk.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"

namespace FileSystem {
namespace {

FILE_INFORMATION recordOf(const WIN32_FIND_DATAA& entry, const Detail::FolderWalk& walk) {
  FILE_INFORMATION information = Detail::informationOf(entry);
  const Detail::FixedText<sizeof(information.cFileName)> name(walk.relativePath());
  std::memcpy(information.cFileName, name.c_str(), sizeof(information.cFileName));
  return information;
}

}  // namespace

std::uint64_t EnumFolders(std::vector<FILE_INFORMATION>& result, const char* folder,
                          int recursive) {
  const std::size_t before = result.size();
  Detail::FolderWalk walk(folder, recursive != 0);
  walk.run([&](const WIN32_FIND_DATAA& entry) {
    result.push_back(recordOf(entry, walk));
    return true;
  });
  return result.size() - before;
}

std::uint64_t EnumFolders(std::vector<std::string>& result, const char* folder, int recursive) {
  const std::size_t before = result.size();
  Detail::FolderWalk walk(Detail::withBackslash(folder), recursive != 0, true);
  walk.run([&](const WIN32_FIND_DATAA& entry) {
    // A plain join, as in FolderWalk.
    std::string& path = result.emplace_back(walk.parent());
    path += entry.cFileName;
    path += '\\';
    return true;
  });
  return result.size() - before;
}

std::uint64_t EnumFoldersEx(std::vector<FILE_INFORMATION>& result, const char* folder,
                            const boost::function1<int, const char*>& filter, int recursive) {
  const std::size_t before = result.size();
  // If the filter throws, all records stay except those below the current top-level folder.
  std::size_t complete = before;
  Detail::FolderWalk walk(folder, recursive != 0);
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
