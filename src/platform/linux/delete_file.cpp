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
DWORD denialOf(int file, mode_t mode) {
  if (isReadOnly(mode)) return ERROR_ACCESS_DENIED;
  return deletionDenied(file) ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

// The same for a regular file that is not open yet.
DWORD denialOf(int folder, const char* path, mode_t mode) {
  const Descriptor file(openRetrying(folder, path, O_RDONLY | O_NOFOLLOW));
  if (file) return denialOf(file.get(), mode);
  if (isReadOnly(mode)) return ERROR_ACCESS_DENIED;
  // Without descriptors the locks are not known. Otherwise, a file that cannot be
  // opened for reading has no holder with locks.
  return errno == EMFILE || errno == ENFILE ? errorFromErrno(errno) : ERROR_SUCCESS;
}

DWORD unlinkUnless(DWORD denial, int folder, const char* path) {
  if (denial != ERROR_SUCCESS) return denial;
  return unlinkat(folder, path, 0) == 0 ? ERROR_SUCCESS : errorFromErrno(errno);
}

}  // namespace

DWORD deleteAt(int folder, const char* path) {
  struct stat status;
  if (fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) != 0) return errorFromErrno(errno);
  if (S_ISDIR(status.st_mode)) return ERROR_ACCESS_DENIED;
  const DWORD denial =
      S_ISREG(status.st_mode) ? denialOf(folder, path, status.st_mode) : DWORD{ERROR_SUCCESS};
  return unlinkUnless(denial, folder, path);
}

DWORD deleteRegularAt(int folder, const char* path) {
  Descriptor file(openRetrying(folder, path, O_RDONLY | O_NOFOLLOW));
  struct stat status;
  // The name may have another type by now.
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return deleteAt(folder, path);
  }
  const DWORD denial = denialOf(file.get(), status.st_mode);
  file = Descriptor();
  return unlinkUnless(denial, folder, path);
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
