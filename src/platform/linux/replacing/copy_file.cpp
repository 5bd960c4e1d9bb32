// CopyFileA and copyFile. A file that no one holds is replaced by a complete copy, so that a
// failed or killed copy leaves the old content. A copy to a free name is made
// under that name and held against all others until it is complete.

#include "platform/copy_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/replacing/file_copy.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

// Creates the file that a dangling link leads to, empty and writable, so that it can be
// copied over. False, with errno, on failure.
bool createThroughLink(const Source& source, const NativePath& path) {
  constexpr mode_t kPermissions = 0777;
  const mode_t mode = (source.status.st_mode & kPermissions) | S_IWUSR;
  return static_cast<bool>(
      Descriptor(openRetrying(AT_FDCWD, path.c_str(), O_RDWR | O_CREAT, mode)));
}

// Copies over the target. On failure a target without content that was created for the
// copy is deleted again. Returns the result of
// CopyFileA.
BOOL copyOverLocked(const Source& source, Target& target, const NativePath& path, bool isNew,
                    const CopyProgress& progress) {
  if (copyOver(source, target, progress)) return TRUE;
  const DWORD error = errorOnPath(path, errno);
  struct stat now;
  if (isNew && target.status.st_size == 0 && lstat(target.path.c_str(), &now) == 0 &&
      isSameFile(now, target.status)) {
    unlink(target.path.c_str());
  }
  return fail(error);
}

}  // namespace
}  // namespace platform::native

using namespace platform::native;

BOOL CopyFileA(const char* source, const char* target, BOOL failIfExists) {
  return platform::copyFile(source, target, failIfExists != FALSE) ? TRUE : FALSE;
}

bool platform::copyFile(const char* sourceText, const char* targetText, bool failIfExists,
                        const CopyProgress& progress) {
  const NativePath path(targetText);
  if (!path.valid()) return fail(path.error()) != FALSE;
  if (path.hadTrailingSeparator()) {
    TrailingSeparatorErrors errors{.missing = ERROR_INVALID_NAME};
    if (failIfExists) errors.folder = errors.file = ERROR_FILE_EXISTS;
    return fail(trailingSeparatorError(path, errors)) != FALSE;
  }
  Source source;
  if (!openSource(sourceText, source)) return false;

  // Other processes may create and delete the target at the same time.
  constexpr int kAttempts = 16;
  bool isNew = false;
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    // The name is taken for a free one first, which needs no check.
    if (copyToNew(source, path, progress)) return true;
    if (errno != EEXIST) return fail(errorOnPath(path, errno)) != FALSE;
    if (failIfExists) return fail(ERROR_FILE_EXISTS) != FALSE;
    Target target;
    const TargetState state = lockTarget(path, source, target);
    if (state == TargetState::Failed) return false;
    if (state == TargetState::Ready)
      return copyOverLocked(source, target, path, isNew, progress) != FALSE;
    if (state != TargetState::Missing) continue;
    isNew = createThroughLink(source, path);
    if (!isNew) return fail(errorOnPath(path, errno)) != FALSE;
  }
  return fail(ERROR_SHARING_VIOLATION) != FALSE;
}
