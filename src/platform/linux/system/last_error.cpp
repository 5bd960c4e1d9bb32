#include "platform/linux/system/last_error.h"

#include <cerrno>

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD GetLastError() { return lastError; }

void SetLastError(DWORD error) { lastError = error; }

namespace platform::native {

DWORD errorFromErrno(int error) {
  switch (error) {
    case 0:
      return ERROR_SUCCESS;
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
      return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
    case ENXIO:
    case ENODEV:
    case EOPNOTSUPP:
      return ERROR_ACCESS_DENIED;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EROFS:
      return ERROR_WRITE_PROTECT;
    case ETXTBSY:
    case EBUSY:
    case EAGAIN:
      return ERROR_SHARING_VIOLATION;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case ENOTEMPTY:
      return ERROR_DIR_NOT_EMPTY;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case ECANCELED:
      return ERROR_REQUEST_ABORTED;
    case EBADMSG:
      return ERROR_CRC;
    case EXDEV:
      return ERROR_NOT_SAME_DEVICE;
    default:
      return ERROR_GEN_FAILURE;
  }
}

BOOL fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

BOOL failWithErrno() { return fail(errorFromErrno(errno)); }

HANDLE invalidHandle(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;
}

}  // namespace platform::native
