#include "platform/linux/opening/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/metadata/write_time.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/trees/copy_content.h"

namespace platform::native {

NewFile::NewFile(int directory, const char* name, mode_t mode)
    : directory_(directory),
      name_(name),
      file_(openRetrying(directory, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode)) {
  if (!file_) return;
  isIncomplete_ = fstat(file_.get(), &status_) == 0;
  if (isIncomplete_) return;
  const int error = errno;
  unlinkat(directory_, name, 0);
  errno = error;
}

NewFile::~NewFile() {
  if (!isIncomplete_) return;
  const int error = errno;
  remove();
  file_ = Descriptor();
  errno = error;
}

// Another program may have moved the file, and put its own under the name.
void NewFile::remove() const {
  struct stat now;
  if (fstatat(directory_, name_, &now, AT_SYMLINK_NOFOLLOW) == 0 && isSameFile(now, status_)) {
    unlinkat(directory_, name_, 0);
  }
}

// File systems such as FAT ignore the mode of a creation. A user whom they do not take for the
// owner can set none at all; the copy is complete without.
bool NewFile::makeReadOnly() const {
  if (isReadOnly(status_.st_mode)) return true;
  return fchmod(file_.get(), status_.st_mode & 07777 & ~kAnyWrite) == 0 || errno == EPERM;
}

bool NewFile::copyFrom(int descriptor, const struct stat& source, const CopyProgress& progress) {
  holdUnfinished(file_);
  return copyContent(descriptor, source, file_.get(), progress) &&
         (!isReadOnly(source.st_mode) || makeReadOnly()) &&
         setWriteTime(file_.get(), source.st_mtim, status_.st_mtim) && close();
}

bool NewFile::close() {
  isIncomplete_ = !file_.close();
  return !isIncomplete_;
}

}  // namespace platform::native
