#include "platform/linux/trees/delete_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/system/last_error.h"

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

// Reports whether the permissions of an open folder, and the attributes of both, allow to remove an
// entry of this status from it.
bool permitsRemoval(int folder, const struct statx& entry) {
  constexpr std::uint64_t kFixed = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;
  struct statx directory;
  if (faccessat(folder, ".", W_OK | X_OK, AT_EACCESS) != 0 ||
      statx(folder, "", AT_EMPTY_PATH, STATX_MODE | STATX_UID, &directory) != 0 ||
      ((entry.stx_attributes | directory.stx_attributes) & kFixed) != 0) {
    return false;
  }
  // In a folder such as /tmp, only the owners of the file and of the folder remove it.
  const uid_t user = geteuid();
  return (directory.stx_mode & S_ISVTX) == 0 || user == 0 || user == entry.stx_uid ||
         user == directory.stx_uid;
}

}  // namespace

DWORD deletionError(int folder, const char* name) {
  struct statx status;
  if (statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE | STATX_UID, &status) != 0) {
    return errorFromErrno(errno);
  }
  if (S_ISDIR(status.stx_mode) || !permitsRemoval(folder, status)) return ERROR_ACCESS_DENIED;
  return S_ISREG(status.stx_mode) ? denialOf(folder, name, status.stx_mode) : DWORD{ERROR_SUCCESS};
}

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

DWORD deleteUnheldAt(int folder, const char* name) {
  Descriptor file(openRetrying(folder, name, O_RDONLY | O_NOFOLLOW));
  struct stat status;
  const bool isPlain = file && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
                       !isReadOnly(status.st_mode) && !isHeldByOthers(file.get());
  if (!isPlain) return ERROR_SHARING_VIOLATION;
  file = Descriptor();
  return unlinkUnless(ERROR_SUCCESS, folder, name);
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
