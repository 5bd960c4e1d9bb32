// CopyFileA. A file that no one holds is replaced by a complete copy, so that a
// failed or killed copy leaves the old content. A copy to a free name is made
// under that name and held against all others until it is complete.

#include <cerrno>

#include "platform/linux/existing_file.h"
#include "platform/linux/file_copy.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/linux/win32_linux.h"

using namespace platform::native;

BOOL CopyFileA(const char* sourceText, const char* targetText, BOOL failIfExists) {
  const NativePath path(targetText);
  if (!path.valid()) return fail(path.error());
  if (path.hadTrailingSeparator()) {
    TrailingSeparatorErrors errors{.missing = ERROR_INVALID_NAME};
    if (failIfExists != FALSE) errors.folder = errors.file = ERROR_FILE_EXISTS;
    return fail(trailingSeparatorError(path, errors));
  }
  Source source;
  if (!openSource(sourceText, source)) return FALSE;

  // Other processes may create and delete the target at the same time.
  constexpr int kAttempts = 16;
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    // The name is taken for a free one first, which needs no check.
    if (copyToNew(source, path)) return TRUE;
    if (errno != EEXIST) return fail(errorOnPath(path, errno));
    if (failIfExists != FALSE) return fail(ERROR_FILE_EXISTS);
    Target target;
    const TargetState state = lockTarget(path, source, target);
    if (state == TargetState::Failed) return FALSE;
    if (state != TargetState::Locked) continue;
    return copyOver(source, target) ? TRUE : fail(errorOnPath(path, errno));
  }
  return fail(ERROR_SHARING_VIOLATION);
}
