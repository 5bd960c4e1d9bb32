#include "files/folder_failure.h"

#include "reporting/reasons.h"

namespace FileSystem::Detail {
namespace {

// Returns the attributes of the folder, or of the nearest one above that exists.
DWORD nearestAttributes(std::string path) {
  for (;;) {
    path.erase(path.find_last_not_of("\\/") + 1);
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const std::size_t separator = path.find_last_of("\\/");
    if (attributes != INVALID_FILE_ATTRIBUTES || separator == std::string::npos) return attributes;
    path.resize(separator);
  }
}

}  // namespace

Reason folderFailure(const std::string& path, DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DIRECTORY: {
      const DWORD attributes = nearestAttributes(path);
      const bool isFile =
          attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
      return isFile ? Reason::NotAFolder : Reason::Missing;
    }
    default:
      return reasonOfError(error);
  }
}

}  // namespace FileSystem::Detail
