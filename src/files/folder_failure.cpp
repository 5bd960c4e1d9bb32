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
  const Reason reason = reasonOfError(error);
  // Systems differ in the error of a file that is used as a folder.
  if (reason != Reason::Missing && reason != Reason::NotAFolder && reason != Reason::Failed) {
    return reason;
  }
  const DWORD attributes = nearestAttributes(path);
  const bool isFile =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  if (isFile) return Reason::NotAFolder;
  return reason == Reason::NotAFolder ? Reason::Missing : reason;
}

}  // namespace FileSystem::Detail
