#include "platform/linux/replacement_file.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "platform/linux/durability.h"

namespace platform::native {

bool isRefusal(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:         // the target is a mount point
    case ENOENT:        // there is no /proc, which names the new file
    case ENAMETOOLONG:  // the temporary name is longer than the target's
      return true;
    default:
      return false;
  }
}

std::string temporaryNameFor(const struct stat& old) {
  char name[40];
  std::snprintf(name, sizeof(name), ".~copy%llx.tmp", static_cast<unsigned long long>(old.st_ino));
  return name;
}

ReplacementFile::ReplacementFile(int directory, const struct stat& old, mode_t mode)
    : directory_(directory), temporaryName_(temporaryNameFor(old)) {
  file_ = Descriptor(::openat(directory, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
  if (file_ || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) return;
  unlinkat(directory, temporaryName_.c_str(), 0);
  file_ = Descriptor(::openat(directory, temporaryName_.c_str(),
                              O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
  named_ = static_cast<bool>(file_);
}

ReplacementFile::~ReplacementFile() {
  if (named_) unlinkat(directory_, temporaryName_.c_str(), 0);
}

bool ReplacementFile::link() {
  const std::string own = "/proc/self/fd/" + std::to_string(file_.get());
  return linkat(AT_FDCWD, own.c_str(), directory_, temporaryName_.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool ReplacementFile::putInPlace(const char* name) {
  if (!commitContent(file_.get())) return false;
  if (!named_) {
    named_ = link() ||
             (errno == EEXIST && unlinkat(directory_, temporaryName_.c_str(), 0) == 0 && link());
    if (!named_) return false;
  }
  if (renameat(directory_, temporaryName_.c_str(), directory_, name) != 0) return false;
  named_ = false;
  return true;
}

bool canBeReplaced(int directory, int held) {
  constexpr mode_t kOwnerOnly = 0600;
  constexpr char kAcl[] = "system.posix_acl_access";
  struct stat old;
  if (fstat(held, &old) != 0 || old.st_nlink != 1) return false;
  const ReplacementFile file(directory, old, kOwnerOnly);
  if (!file || fchown(file.descriptor(), old.st_uid, old.st_gid) != 0) return false;
  const ssize_t size = fgetxattr(held, kAcl, nullptr, 0);
  if (size <= 0) return true;
  std::vector<char> acl(static_cast<std::size_t>(size));
  return fgetxattr(held, kAcl, acl.data(), acl.size()) == size &&
         fsetxattr(file.descriptor(), kAcl, acl.data(), acl.size(), 0) == 0;
}

}  // namespace platform::native
