#include "platform/linux/replacing/overwriting.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/replacing/durability.h"
#include "platform/linux/trees/copy_content.h"

namespace platform::native {
namespace {

bool isAt(int file, off_t position) { return lseek(file, position, SEEK_SET) == position; }

// Truncates a file of which the disk took only a part. An NFS client may send a page that the
// server refused again after the truncation, with the zeros up to the page's end, and so extend the
// file. Keeps errno.
void cutBack(int file, off_t size) {
  constexpr int kAttempts = 5;
  const int error = errno;
  struct stat now {};
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    if (ftruncate(file, size) != 0) continue;
    const bool isCommitted = commitContent(file);
    if (isCommitted && fstat(file, &now) == 0 && now.st_size == size) break;
  }
  errno = error;
}

// Writes what exceeds the old content, so that the rest needs no new blocks.
bool appendRest(int from, off_t size, off_t oldSize, int to, const CopyProgress& progress) {
  if (isAt(from, oldSize) && isAt(to, oldSize) && copyBytes(from, size - oldSize, to, progress) &&
      commitContent(to)) {
    return true;
  }
  cutBack(to, oldSize);
  return false;
}

bool reserve(int from, off_t size, off_t oldSize, int to, const CopyProgress& progress) {
  if (size == 0 || fallocate(to, FALLOC_FL_KEEP_SIZE, 0, size) == 0) return true;
  if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) return false;
  // Network file systems cannot reserve.
  return size <= oldSize || appendRest(from, size, oldSize, to, progress);
}

// Returns a function that calls `progress`, and always continues.
CopyProgress continuing(const CopyProgress& progress) {
  if (!progress) return {};
  return [&progress](std::uint64_t position) {
    progress(position);
    return true;
  };
}

}  // namespace

bool overwriteContent(int from, off_t size, const struct stat& old, int to,
                      const CopyProgress& progress) {
  constexpr mode_t kSetId = S_ISUID | S_ISGID;
  constexpr mode_t kPermissions = 01777;
  // Where the owner is another user, the system removes these bits at the first write.
  if ((old.st_mode & kSetId) != 0 && fchmod(to, old.st_mode & kPermissions) != 0 &&
      errno != EPERM) {
    return false;
  }
  const CopyProgress told = continuing(progress);
  if (!reserve(from, size, old.st_size, to, told)) return false;
  return isAt(from, 0) && isAt(to, 0) && copyBytes(from, size, to, told) &&
         ftruncate(to, lseek(to, 0, SEEK_CUR)) == 0;
}

}  // namespace platform::native
