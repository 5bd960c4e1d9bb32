#include "platform/linux/trees/new_link.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/metadata/file_time.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/replacing/version_name.h"

namespace platform::native {
namespace {

// Keeps errno.
void removeLink(int directory, const char* name) {
  const int error = errno;
  unlinkat(directory, name, 0);
  errno = error;
}

bool setLinkTime(int directory, const char* name, const NewMetadata& metadata) {
  if (!metadata.lastWrite) return true;
  const struct timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT},
                                   timeSpecOf(*metadata.lastWrite)};
  return utimensat(directory, name, times, AT_SYMLINK_NOFOLLOW) == 0 || errno == EPERM ||
         errno == EOPNOTSUPP;
}

}  // namespace

bool createLink(int directory, const char* name, const NewLink& link) {
  if (symlinkat(link.target.c_str(), directory, name) != 0) return false;
  if (setLinkTime(directory, name, link.metadata)) return true;
  removeLink(directory, name);
  return false;
}

bool replaceByLink(int directory, const char* name, const struct stat& old, const NewLink& link) {
  std::string own;
  int attempts = kOpenAttempts;
  do {
    own = uniqueVersionNameFor(name);
    if (createLink(directory, own.c_str(), link)) break;
    if (errno != EEXIST) return false;
  } while (--attempts > 0);
  if (attempts == 0) return false;
  struct stat now;
  const bool isListed = fstatat(directory, name, &now, AT_SYMLINK_NOFOLLOW) == 0;
  // A program that does not use the locks may have put another file there.
  if (isListed && !isSameFile(now, old)) errno = EBUSY;
  const bool isReplaced =
      isListed && isSameFile(now, old) && renameat(directory, own.c_str(), directory, name) == 0;
  if (!isReplaced) removeLink(directory, own.c_str());
  return isReplaced;
}

}  // namespace platform::native
