// Making and removing folders.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/attributes.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/linux/win32_linux.h"

using namespace platform::native;

BOOL CreateDirectoryA(const char* text, SECURITY_ATTRIBUTES*) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  constexpr mode_t kAll = 0777;
  if (mkdir(path.c_str(), kAll) == 0) return TRUE;
  // Only the folder above can be missing.
  return fail(errno == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(errno));
}

// Of a link to a folder the link goes; what is behind it stays.
BOOL RemoveDirectoryA(const char* text) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  struct stat own;
  if (lstat(path.c_str(), &own) != 0) return fail(errorOnPath(path, errno));
  if (S_ISLNK(own.st_mode)) {
    struct stat target;
    if (stat(path.c_str(), &target) != 0 || !S_ISDIR(target.st_mode)) return fail(ERROR_DIRECTORY);
    return unlink(path.c_str()) == 0 ? TRUE : failWithErrno();
  }
  if (!S_ISDIR(own.st_mode)) return fail(ERROR_DIRECTORY);
  if (isReadOnly(own.st_mode)) return fail(ERROR_ACCESS_DENIED);
  if (rmdir(path.c_str()) == 0) return TRUE;
  return fail(errno == EEXIST ? ERROR_DIR_NOT_EMPTY : errorOnPath(path, errno));
}
