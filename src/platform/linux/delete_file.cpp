#include "platform/linux/delete_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/attributes.h"
#include "platform/linux/existing_file.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/linux/share_lock.h"

namespace platform::native {
namespace {

// Returns the error of a regular file that must not be deleted now.
DWORD denialOf(int folder, const char* path, const struct stat& status) {
  if (isReadOnly(status.st_mode)) return ERROR_ACCESS_DENIED;
  const Descriptor file(openRetrying(folder, path, O_RDONLY | O_NOFOLLOW));
  if (file) return deletionDenied(file.get()) ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
  // Without descriptors the locks are not known. Otherwise, a file that cannot be
  // opened for reading has no holder with locks.
  return errno == EMFILE || errno == ENFILE ? errorFromErrno(errno) : ERROR_SUCCESS;
}

}  // namespace

DWORD deleteAt(int folder, const char* path) {
  struct stat status;
  if (fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) != 0) return errorFromErrno(errno);
  if (S_ISDIR(status.st_mode)) return ERROR_ACCESS_DENIED;
  const DWORD denial =
      S_ISREG(status.st_mode) ? denialOf(folder, path, status) : DWORD{ERROR_SUCCESS};
  if (denial != ERROR_SUCCESS) return denial;
  return unlinkat(folder, path, 0) == 0 ? ERROR_SUCCESS : errorFromErrno(errno);
}

}  // namespace platform::native

using namespace platform::native;

BOOL DeleteFileA(const char* text) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  if (path.hadTrailingSeparator()) return fail(trailingSeparatorError(path, {}));
  const DWORD error = deleteAt(AT_FDCWD, path.c_str());
  if (error == ERROR_SUCCESS) return TRUE;
  return fail(error == ERROR_FILE_NOT_FOUND ? errorOnPath(path, ENOENT) : error);
}
