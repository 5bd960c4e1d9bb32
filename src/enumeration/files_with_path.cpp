// Files of a folder or tree that can be opened, as records and as full paths.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>

#include "enumeration/search.h"
#include "path/fixed_text.h"

namespace FileSystem {
namespace {

// Calls `found(entry, path)` for each file of the folder that can be opened. The
// path is cut as all paths of the enumeration are.
template <typename Found>
void forEachFile(Detail::Search search, const std::string& folder, Found found) {
  while (search.next()) {
    if (search.isFolder()) continue;
    Detail::PathText path{std::string_view(folder)};
    path.append(search.entry().cFileName);
    if (FileExists(path.c_str()) != 0) found(search.entry(), path);
  }
}

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
  std::vector<std::string> folders{Detail::withBackslash(folder)};
  if (recursive) EnumFolders(folders, std::string(folders.front()).c_str(), 1);
  for (const std::string& current : folders) {
    forEachFile(Detail::Search::forNames(current + pattern), current,
                [&](const WIN32_FIND_DATAA&, const Detail::PathText& path) {
                  result.emplace_back(path.view());
                });
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
