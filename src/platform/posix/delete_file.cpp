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

bool heldAgainstDeletion(const NativePath& path) {
  const Descriptor file(
      ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
  // What cannot be opened for reading has no holder that went through here.
  return file && deletionDenied(file.get());
}

}  // namespace
}  // namespace platform::posix

using namespace platform::posix;

// Of a link the link goes, whatever is behind it.
BOOL DeleteFileA(const char* text) {
  const NativePath path(text);
  if (!path.valid()) return fail(path.error());
  if (path.hadTrailingSeparator()) return fail(ERROR_INVALID_NAME);
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) return fail(errorOnPath(path, errno));
  if (S_ISDIR(status.st_mode)) return fail(ERROR_ACCESS_DENIED);
  if (S_ISREG(status.st_mode)) {
    if (isReadOnly(status.st_mode)) return fail(ERROR_ACCESS_DENIED);
    if (heldAgainstDeletion(path)) return fail(ERROR_SHARING_VIOLATION);
  }
  return unlink(path.c_str()) == 0 ? TRUE : fail(errorOnPath(path, errno));
}
