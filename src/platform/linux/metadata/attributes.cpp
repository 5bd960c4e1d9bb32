#include "platform/linux/metadata/attributes.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/names/native_path.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

// Reads the status of the file or folder, past links. False, with the error, on
// failure.
bool readStatus(const char* text, struct statx& status, DWORD& attributes) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  struct statx own;
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, kWanted, &own) != 0) {
    return fail(errorOnPath(path, errno));
  }
  const bool isLink = S_ISLNK(own.stx_mode);
  status = own;
  if (isLink && statx(AT_FDCWD, path.c_str(), AT_STATX_DONT_SYNC, kWanted, &status) != 0) {
    return fail(errorOnPath(path, errno));
  }
  if (path.hadTrailingSeparator() && !S_ISDIR(status.stx_mode)) return fail(ERROR_PATH_NOT_FOUND);
  attributes = attributesOf(nameOf(path.c_str()), status.stx_mode, isLink);
  return true;
}

}  // namespace

DWORD attributesOf(const char* name, mode_t mode, bool isLink) {
  DWORD attributes = isReadOnly(mode) ? FILE_ATTRIBUTE_READONLY : 0;
  if (S_ISDIR(mode)) {
    attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if (isLink) attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  } else {
    attributes |= FILE_ATTRIBUTE_ARCHIVE;
  }
  if (name[0] == '.' && !isDots(name)) attributes |= FILE_ATTRIBUTE_HIDDEN;
  return attributes;
}

}  // namespace platform::native

using namespace platform::native;

DWORD GetFileAttributesA(const char* path) {
  struct statx status {};
  DWORD attributes = 0;
  return readStatus(path, status, attributes) ? attributes : INVALID_FILE_ATTRIBUTES;
}

BOOL GetFileAttributesExA(const char* path, GET_FILEEX_INFO_LEVELS, void* data) {
  struct statx status {};
  DWORD attributes = 0;
  if (!readStatus(path, status, attributes)) return FALSE;
  fillData(*static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data), status, attributes);
  return TRUE;
}

// Sets the read-only attribute. The others follow from the type and the name.
BOOL SetFileAttributesA(const char* text, DWORD attributes) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return fail(errorOnPath(path, errno));
  if (path.hadTrailingSeparator() && !S_ISDIR(status.st_mode)) return fail(ERROR_INVALID_NAME);
  const bool wanted = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  if (wanted == isReadOnly(status.st_mode)) return TRUE;
  const mode_t mode = status.st_mode & 07777;
  const mode_t changed = wanted ? mode & ~kAnyWrite : mode | S_IWUSR;
  return chmod(path.c_str(), changed) == 0 ? TRUE : failWithErrno();
}
