#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/attributes.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_path.h"
#include "platform/posix/share_lock.h"
#include "platform/posix/win32_posix.h"

namespace platform::posix {
namespace {

// Whether what the status tells of can be deleted.
bool permits(const struct stat& status) {
  return !S_ISDIR(status.st_mode) && !(S_ISREG(status.st_mode) && isReadOnly(status.st_mode));
}

}  // namespace
}  // namespace platform::posix

using namespace platform::posix;

// Of a link the link goes, whatever is behind it.
BOOL DeleteFileA(const char* text) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  if (path.hadTrailingSeparator()) return fail(ERROR_INVALID_NAME);
  const Descriptor file(
      ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
  struct stat status;
  // What cannot be opened for reading, as a link, has no holder that went through
  // here.
  const bool looked =
      (file && fstat(file.get(), &status) == 0) || lstat(path.c_str(), &status) == 0;
  if (!looked) return fail(errorOnPath(path, errno));
  if (!permits(status)) return fail(ERROR_ACCESS_DENIED);
  if (file && S_ISREG(status.st_mode) && deletionDenied(file.get())) {
    return fail(ERROR_SHARING_VIOLATION);
  }
  return unlink(path.c_str()) == 0 ? TRUE : fail(errorOnPath(path, errno));
}
