// CopyFileA. A copy in the place of an existing file is made without a name and
// gets the target's name only when it is complete, so that a failed or killed
// copy leaves the old content. A copy of a free name is made under that name,
// held against all others until it is complete.

#include <cerrno>
#include <utility>

#include "platform/linux/file_copy.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/unique_handle.h"

namespace {

// Rounds with somebody else who makes and deletes the target at the same time.
constexpr int kAttempts = 16;

}  // namespace

BOOL CopyFileA(const char* sourceText, const char* targetText, BOOL failIfExists) {
  using namespace platform::native;
  const NativePath path(targetText);
  if (!path.valid()) return fail(path.error());
  if (path.hadTrailingSeparator()) return fail(ERROR_PATH_NOT_FOUND);
  platform::FileHandle handle;
  Source source{.descriptor = -1, .status = {}};
  if (!openSource(sourceText, handle, source)) return FALSE;

  // At first the name is taken to be free, which costs no look.
  Target target{.path = path.c_str(), .held = {}};
  for (int attempt = 1; !copyTo(source, target); ++attempt) {
    if (errno != EEXIST || attempt == kAttempts) return fail(errorOnPath(path, errno));
    if (!examine(path, source, failIfExists != FALSE, target)) return FALSE;
  }
  return TRUE;
}
