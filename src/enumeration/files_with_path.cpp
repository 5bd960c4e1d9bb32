// Lists of the files of a folder or tree that can be opened, as records and as full paths.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>

#include <string_view>

#include "enumeration/folder_walk.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"

namespace FileSystem {
namespace {

// Calls `found(entry, path)` for the current entry of a search, if it is a file of the folder that
// can be opened. The path is cut at the size of its buffer; a path that was cut names another file.
template <typename Found>
void reportFile(const Detail::Search& search, const std::string& folder, Found& found) {
  if (search.isFolder()) return;
  const std::string_view name = search.entry().cFileName;
  // boost::format("%s%s") would take half as long again as all else that is done for a file.
  Detail::PathText path{std::string_view(folder)};
  path.append(name);
  const bool isCut = path.view().size() < folder.size() + name.size();
  const bool opens = isCut ? FileExists(path.c_str()) != 0 : search.canOpen(path.c_str());
  if (opens) found(search.entry(), path);
}

template <typename Found>
void forEachFile(Detail::Search search, const std::string& folder, Found found) {
  while (search.next()) reportFile(search, folder, found);
}

// Lists the files in the order of the folders that EnumFolders returns. Each folder is read once,
// for its files and its subfolders.
template <typename Found>
void forEachFileInTree(const std::string& start, Found found) {
  Detail::FolderWalk walk(start, true, true);
  walk.run([](const WIN32_FIND_DATAA&) { return true; },
           [&](const Detail::Search& search) { reportFile(search, walk.path(), found); });
}

bool matchesEveryName(std::string_view pattern) { return pattern == "*" || pattern == "*.*"; }

}  // namespace

std::uint64_t EnumFilesWithPath(std::vector<FILE_INFORMATION>& result, const char* folder,
                                const char* pattern) {
  const std::size_t before = result.size();
  const std::string start = Detail::withBackslash(folder);
  forEachFile(Detail::Search(start + pattern), start,
              [&](const WIN32_FIND_DATAA& entry, const Detail::PathText&) {
                result.push_back(Detail::informationOf(entry));
              });
  return result.size() - before;
}

std::uint64_t EnumFilesWithPath(std::vector<std::string>& result, const char* folder,
                                const char* pattern, bool recursive) {
  const std::size_t before = result.size();
  const std::string start = Detail::withBackslash(folder);
  const auto found = [&](const WIN32_FIND_DATAA&, const Detail::PathText& path) {
    result.emplace_back(path.view());
  };
  if (recursive && matchesEveryName(pattern)) {
    forEachFileInTree(start, found);
    return result.size() - before;
  }
  std::vector<std::string> folders{start};
  if (recursive) EnumFolders(folders, start.c_str(), 1);
  for (const std::string& current : folders) {
    forEachFile(Detail::Search::forNames(current + pattern), current, found);
  }
  return result.size() - before;
}

std::uint64_t EnumFilesWithPathEx(std::vector<FILE_INFORMATION>& result, const char* folder,
                                  const char* pattern,
                                  const boost::function1<int, const char*>& filter) {
  const std::size_t before = result.size();
  const std::string start = Detail::withBackslash(folder);
  forEachFile(Detail::Search(start + pattern), start,
              [&](const WIN32_FIND_DATAA& entry, const Detail::PathText& path) {
                if (filter(path.c_str()) != 0) result.push_back(Detail::informationOf(entry));
              });
  return result.size() - before;
}

}  // namespace FileSystem
