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
void forEachFile(const std::string& folder, const char* pattern, Found found) {
  for (Detail::Search search(folder + pattern); search.next();) {
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
  forEachFile(Detail::withBackslash(folder), pattern,
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
    forEachFile(current, pattern, [&](const WIN32_FIND_DATAA&, const Detail::PathText& path) {
      result.emplace_back(path.view());
    });
  }
  return result.size() - before;
}

std::uint64_t EnumFilesWithPathEx(std::vector<FILE_INFORMATION>& result, const char* folder,
                                  const char* pattern,
                                  const boost::function1<int, const char*>& filter) {
  const std::size_t before = result.size();
  forEachFile(Detail::withBackslash(folder), pattern,
              [&](const WIN32_FIND_DATAA& entry, const Detail::PathText& path) {
                if (filter(path.c_str()) != 0) result.push_back(Detail::informationOf(entry));
              });
  return result.size() - before;
}

}  // namespace FileSystem
