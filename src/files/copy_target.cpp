#include "files/copy_target.h"

#include <filesystem/files.h>

#include "files/attributes.h"
#include "files/folder_failure.h"
#include "files/make_folders.h"
#include "path/characters.h"
#include "path/fixed_text.h"
#include "platform/file_identity.h"
#include "reporting/reasons.h"

namespace FileSystem::Detail {
namespace {

bool exists(const char* path) { return GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES; }

bool isSameFile(const char* first, const char* second) {
  platform::FileIdentity a;
  platform::FileIdentity b;
  return platform::fileIdentity(first, a) && platform::fileIdentity(second, b) && a == b;
}

}  // namespace

std::string creatable(std::string_view path) {
  const bool isRooted = path.find(':') == 1 || (!path.empty() && isSeparator(path.front()));
  return (isRooted ? "" : ".\\") + std::string(path);
}

Reason prepareTarget(const std::string& path, std::vector<std::string>& created) {
  // EnsurePathExists would cut a longer path and create the folder of the rest.
  if (path.size() >= kPathBuffer) return Reason::PathTooLong;
  const bool isMade = makeFolders(path.c_str(), &created);
  const DWORD error = GetLastError();
  if (IsValidPath(path.c_str()) != 0) return Reason::None;
  return folderFailure(path, isMade ? GetLastError() : error);
}

Reason copyFailure(const char* source, const char* target, bool isRegular, DWORD error) {
  if (error == ERROR_REQUEST_ABORTED) return Reason::Cancelled;
  if (!isRegular && platform::isNoFile(source)) return Reason::NotAFile;
  if (error == ERROR_SHARING_VIOLATION && isSameFile(source, target)) return Reason::SameFile;
  if (error == ERROR_ACCESS_DENIED) {
    if (isDirectory(target)) return Reason::IsAFolder;
    if (exists(target) && platform::isNoFile(target)) return Reason::NotAFile;
  }
  return reasonOfError(error);
}

}  // namespace FileSystem::Detail
