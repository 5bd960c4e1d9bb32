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

// Whether what the status tells of can be deleted.
bool permits(const struct stat& status) {
  return !S_ISDIR(status.st_mode) && !(S_ISREG(status.st_mode) && isReadOnly(status.st_mode));
}

}  // namespace

DWORD deleteAt(int folder, const char* path) {
  const Descriptor file(openRetrying(folder, path, O_RDONLY | O_NOFOLLOW));
  struct stat status;
  // What cannot be opened for reading, as a link, has no holder that went through
  // here.
  const bool looked = (file && fstat(file.get(), &status) == 0) ||
                      fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (!looked) return errorFromErrno(errno);
  if (!permits(status)) return ERROR_ACCESS_DENIED;
  if (file && S_ISREG(status.st_mode) && deletionDenied(file.get())) {
    return ERROR_SHARING_VIOLATION;
  }
  return unlinkat(folder, path, 0) == 0 ? ERROR_SUCCESS : errorFromErrno(errno);
}

}  // namespace platform::native

using namespace platform::native;

BOOL DeleteFileA(const char* text) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  if (path.hadTrailingSeparator()) return fail(ERROR_INVALID_NAME);
  const DWORD error = deleteAt(AT_FDCWD, path.c_str());
  if (error == ERROR_SUCCESS) return TRUE;
  return fail(error == ERROR_FILE_NOT_FOUND ? errorOnPath(path, ENOENT) : error);
}
