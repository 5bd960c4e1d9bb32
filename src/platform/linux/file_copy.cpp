#include "platform/linux/file_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "platform/linux/attributes.h"
#include "platform/linux/copy_content.h"
#include "platform/linux/file_handle.h"
#include "platform/linux/last_error.h"
#include "platform/linux/share_lock.h"

namespace platform::native {
namespace {

std::string folderOf(const std::string& path) {
  const std::size_t separator = path.rfind('/');
  if (separator == std::string::npos) return ".";
  return separator == 0 ? "/" : path.substr(0, separator);
}

// A file that goes again unless it is kept.
class NewFile {
 public:
  // A file of that name, which nobody may have.
  static NewFile named(const std::string& name, mode_t mode) {
    NewFile file;
    file.file_ = Descriptor(::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (file) file.name_ = name;
    return file;
  }
  // A file in the folder of `target`, without a name where the file system has
  // such files.
  static NewFile beside(const Target& target, mode_t mode) {
    NewFile file;
    file.file_ =
        Descriptor(::open(folderOf(target.path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    if (file || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) return file;
    const std::string name = temporaryName(target);
    unlink(name.c_str());
    return named(name, mode);
  }
  NewFile(NewFile&& other) noexcept
      : file_(std::move(other.file_)), name_(std::exchange(other.name_, {})) {}
  NewFile& operator=(NewFile&&) = delete;
  ~NewFile() {
    if (!name_.empty()) unlink(name_.c_str());
  }

  explicit operator bool() const { return static_cast<bool>(file_); }
  int descriptor() const { return file_.get(); }

  void keep() { name_.clear(); }
  // Puts the file in the place of another one.
  bool replace(const Target& target) {
    if (name_.empty() && !takeName(temporaryName(target))) return false;
    if (rename(name_.c_str(), target.path.c_str()) != 0) return false;
    keep();
    return true;
  }

 private:
  NewFile() = default;

  bool takeName(const std::string& name) {
    const std::string own = "/proc/self/fd/" + std::to_string(file_.get());
    const auto link = [&] {
      return linkat(AT_FDCWD, own.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    const bool linked = link() || (errno == EEXIST && unlink(name.c_str()) == 0 && link());
    if (linked) name_ = name;
    return linked;
  }

  Descriptor file_;
  std::string name_;  // empty while the file has none, and once it is kept
};

// A replaced file stays its owner's, with its permissions; whether it may be
// written to follows from the source.
bool carryOver(const Source& source, const Target& target, int descriptor) {
  const struct timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, source.status.st_mtim};
  if (target.exists) {
    const struct stat& old = target.status;
    if (old.st_uid != geteuid() || old.st_gid != getegid()) {
      // Only the superuser can give a file away; for others it becomes theirs.
      [[maybe_unused]] const int ignored = fchown(descriptor, old.st_uid, old.st_gid);
    }
    mode_t mode = old.st_mode & 07777;
    if (isReadOnly(source.status.st_mode)) mode &= ~kAnyWrite;
    if (fchmod(descriptor, mode) != 0) return false;
  }
  return futimens(descriptor, times) == 0;
}

bool fill(const Source& source, const Target& target, NewFile& file) {
  return file && copyContent(source.descriptor, source.status.st_size, file.descriptor()) &&
         carryOver(source, target, file.descriptor());
}

}  // namespace

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool openSource(const char* text, platform::FileHandle& handle, Source& source) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  handle.reset(CreateFileA(text, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!handle) return false;
  source.descriptor = descriptorOf(handle.get());
  return fstat(source.descriptor, &source.status) == 0 || failWithErrno() != FALSE;
}

bool examine(const NativePath& path, const Source& source, bool failIfExists, Target& target) {
  target = Target{.path = path.c_str(), .held = {}};
  if (stat(path.c_str(), &target.status) != 0) {
    return errno == ENOENT ? true : fail(errorOnPath(path, errno));
  }
  target.exists = true;
  const struct stat& status = target.status;
  if (!S_ISREG(status.st_mode)) return fail(ERROR_ACCESS_DENIED);
  if (failIfExists) return fail(ERROR_FILE_EXISTS);
  if (isSameFile(status, source.status)) return fail(ERROR_SHARING_VIOLATION);
  if (isReadOnly(status.st_mode)) return fail(ERROR_ACCESS_DENIED);

  char real[PATH_MAX];
  if (realpath(path.c_str(), real) == nullptr) return fail(errorOnPath(path, errno));
  target.path = real;
  target.held = Descriptor(::open(real, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (!target.held) return true;
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_DELETE;
  if (!acquireShare(target.held.get(), FILE_WRITE_DATA, kShare)) {
    return fail(ERROR_SHARING_VIOLATION);
  }
  // The one who held it before may have put another file in its place.
  struct stat held;
  if (fstat(target.held.get(), &held) != 0 || stat(real, &target.status) != 0) {
    return failWithErrno();
  }
  return isSameFile(held, target.status) ? true : fail(ERROR_SHARING_VIOLATION);
}

bool copyTo(const Source& source, const Target& target) {
  if (target.exists) {
    constexpr mode_t kOwnOnly = 0600;
    NewFile file = NewFile::beside(target, kOwnOnly);
    return fill(source, target, file) && file.replace(target);
  }
  constexpr mode_t kPermissions = 0777;
  NewFile file = NewFile::named(target.path, source.status.st_mode & kPermissions);
  if (file) holdUnfinished(file.descriptor());
  if (!fill(source, target, file)) return false;
  file.keep();
  return true;
}

std::string temporaryName(const Target& target) {
  char name[40];
  std::snprintf(name, sizeof(name), "/.~copy%llx.tmp",
                static_cast<unsigned long long>(target.status.st_ino));
  return folderOf(target.path) + name;
}

}  // namespace platform::native
