#include "platform/linux/trees/remove_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

// Windows refuses to remove the current folder of any process. That of another
// process cannot be known here.
bool isCurrent(const struct stat& status) {
  struct stat current;
  return stat(".", &current) == 0 && isSameFile(status, current);
}

// Removes a link to a directory itself. ERROR_DIRECTORY if it leads to none.
DWORD removeLink(const char* path) {
  struct stat target;
  if (stat(path, &target) != 0 || !S_ISDIR(target.st_mode)) return ERROR_DIRECTORY;
  return unlink(path) == 0 ? ERROR_SUCCESS : errorFromErrno(errno);
}

}  // namespace

DWORD removeDirectoryAt(int folder, const char* path) {
  struct stat status;
  if (fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) != 0) return errorFromErrno(errno);
  if (!S_ISDIR(status.st_mode)) return ERROR_DIRECTORY;
  if (isReadOnly(status.st_mode)) return ERROR_ACCESS_DENIED;
  if (isCurrent(status)) return ERROR_SHARING_VIOLATION;
  if (unlinkat(folder, path, AT_REMOVEDIR) == 0) return ERROR_SUCCESS;
  return errno == EEXIST ? ERROR_DIR_NOT_EMPTY : errorFromErrno(errno);
}

}  // namespace platform::native

using namespace platform::native;

BOOL RemoveDirectoryA(const char* text) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  if (path.isRoot()) return fail(ERROR_ACCESS_DENIED);
  struct stat status;
  const bool isLink = lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  const DWORD error = isLink ? removeLink(path.c_str()) : removeDirectoryAt(AT_FDCWD, path.c_str());
  if (error == ERROR_SUCCESS) return TRUE;
  return fail(error == ERROR_FILE_NOT_FOUND ? errorOnPath(path, ENOENT) : error);
}
