// Sweeping old files out of a tree.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>

#include <string>
#include <vector>

#include "enumeration/folder_walk.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// The present moment as fileTime gives moments, without its milliseconds.
double now() {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  double date = 0.0;
  return SystemTimeToVariantTime(&time, &date) ? date : 0.0;
}

}  // namespace

unsigned int eraseOldFile(const std::string& folder, unsigned int days) {
  const double limit = now() - static_cast<double>(days);

  // What is behind a link is not the tree's own.
  std::vector<std::string> folders;
  Detail::FolderWalk walk(Detail::withBackslash(folder.c_str()), true, Detail::Links::Reported);
  walk.run([&](const WIN32_FIND_DATAA& entry) {
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (!isLink) folders.push_back(walk.path() + '\\');
    return true;
  });

  std::vector<std::string> files;
  EnumFilesWithPath(files, folder.c_str(), "*.tmp", false);
  for (const std::string& below : folders) EnumFilesWithPath(files, below.c_str(), "*.*", false);

  unsigned int count = 0;
  for (const std::string& file : files) {
    if (limit >= fileTime(file) && DeleteFileA(file.c_str())) ++count;
  }
  for (auto below = folders.rbegin(); below != folders.rend(); ++below) {
    DeleteEmptyFolder(below->c_str());
  }
  return count;
}

}  // namespace FileSystem
