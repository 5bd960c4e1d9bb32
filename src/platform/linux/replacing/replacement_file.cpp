#include "platform/linux/replacing/replacement_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/metadata/new_metadata.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/remote_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/replacing/carry_over.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/replacing/version_name.h"

namespace platform::native {
namespace {

Replaced failure() { return isRefusal(errno) ? Replaced::Refused : Replaced::No; }

// Renames a file in a directory to a name that must be free.
bool renameToFree(int directory, const char* from, const char* to) {
  if (renameat2(directory, from, directory, to, RENAME_NOREPLACE) == 0) return true;
  // Some file systems cannot do both in one step.
  struct stat status;
  return errno == EINVAL && fstatat(directory, to, &status, AT_SYMLINK_NOFOLLOW) != 0 &&
         renameat(directory, from, directory, to) == 0;
}

}  // namespace

bool isRefusal(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:         // the target is a mount point
    case ENAMETOOLONG:  // the temporary name is longer than the target's
      return true;
    default:
      return false;
  }
}

ReplacementFile::ReplacementFile(const Place& place, Named named) : place_(place) {
  constexpr mode_t kOwnerOnly = 0600;
  constexpr mode_t kPermissions = 0666;
  const mode_t mode = place.held != nullptr || place.mode ? kOwnerOnly : kPermissions;
  if (!(named == Named::AtTheEnd && createUnnamed(mode)) && !createNamed(mode)) return;
  isRemote_ = isRemoteFile(file_.get());
  keepsOwner_ = place.held == nullptr || carryOwner(place.status, file_.get());
}

ReplacementFile::~ReplacementFile() {
  const int error = errno;
  if (isNamed_) unlinkat(place_.directory, temporaryName_.c_str(), 0);
  errno = error;
}

bool ReplacementFile::keepsAccess() const {
  return keepsOwner_ &&
         (place_.held == nullptr || canCarryAccess(place_.held->get(), file_.get(), isRemote_));
}

// Without /proc the file could not get a name later.
bool ReplacementFile::createUnnamed(mode_t mode) {
  if (access("/proc/self/fd", F_OK) != 0) return false;
  file_ = Descriptor(openRetrying(place_.directory, ".", O_TMPFILE | O_RDWR, mode));
  return static_cast<bool>(file_);
}

bool ReplacementFile::createNamed(mode_t mode) {
  return underFreeName([&](const char* name) {
    file_ = Descriptor(
        openRetrying(place_.directory, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode));
    return static_cast<bool>(file_);
  });
}

bool ReplacementFile::link() {
  const std::string own = "/proc/self/fd/" + std::to_string(file_.get());
  return underFreeName([&](const char* name) {
    return linkat(AT_FDCWD, own.c_str(), place_.directory, name, AT_SYMLINK_FOLLOW) == 0;
  });
}

// Calls `create(name)` with names for the new version until one is free.
template <typename Create>
bool ReplacementFile::underFreeName(Create create) {
  temporaryName_ = hasOld() ? versionNameFor(place_.name) : uniqueVersionNameFor(place_.name);
  for (int attempt = 1;; ++attempt) {
    isNamed_ = create(temporaryName_.c_str());
    if (isNamed_ || errno != EEXIST || attempt == kOpenAttempts) return isNamed_;
    const bool isFree =
        attempt == 1 && isLeftOver() && unlinkat(place_.directory, temporaryName_.c_str(), 0) == 0;
    if (!isFree) temporaryName_ = uniqueVersionNameFor(place_.name);
  }
}

// Reports whether no process needs the file that has the temporary name. Where there are locks, one
// that replaced the same target would hold it.
bool ReplacementFile::isLeftOver() const {
  constexpr std::time_t kDay = std::time_t{24} * 60 * 60;
  if (place_.held != nullptr && hasLocks(place_.held->get())) return true;
  struct stat status;
  return fstatat(place_.directory, temporaryName_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         status.st_ctim.tv_sec + kDay < std::time(nullptr);
}

bool ReplacementFile::carryOver(const struct stat& now, mode_t removed) {
  // Another process may have given the old file away meanwhile.
  const bool isOwnerSet = now.st_uid == place_.status.st_uid && now.st_gid == place_.status.st_gid;
  const int held = place_.held->get();
  if (!isOwnerSet && !carryOwner(now, file_.get())) return false;
  return place_.mode ? native::setAccess(held, *place_.mode, file_.get())
                     : carryAccess(held, now, removed, file_.get(), isRemote_);
}

bool ReplacementFile::setAccess(const struct stat& now, mode_t removed) {
  if (place_.held != nullptr) return carryOver(now, removed);
  constexpr mode_t kOwnerOnly = 0600;
  return applyMode(file_.get(), place_.mode, kOwnerOnly);
}

Replaced ReplacementFile::prepare(mode_t removed) {
  struct stat now {};
  if (hasOld()) {
    // A program that does not use the locks may have put another file there.
    const char* const name = place_.name.c_str();
    if (fstatat(place_.directory, name, &now, AT_SYMLINK_NOFOLLOW) != 0) return Replaced::No;
    if (!isSameFile(now, place_.status)) {
      errno = EBUSY;
      return Replaced::No;
    }
  }
  if (!setAccess(now, removed)) {
    return cannotCarry(errno) ? Replaced::Refused : Replaced::No;
  }
  return Replaced::Yes;
}

Replaced ReplacementFile::complete() {
  const Replaced prepared = prepare(0);
  if (prepared != Replaced::Yes) return prepared;
  return commitContent(file_.get()) ? Replaced::Yes : Replaced::No;
}

Replaced ReplacementFile::putInPlace() {
  if (!isNamed_ && !link()) return failure();
  struct stat own {};
  if (isRemote_ && fstat(file_.get(), &own) != 0) return Replaced::No;
  if (!file_.close()) return Replaced::No;
  if (isRemote_ && place_.held != nullptr) *place_.held = Descriptor();
  return rename(own);
}

bool ReplacementFile::moveToPlace() {
  const char* const from = temporaryName_.c_str();
  const char* const to = place_.name.c_str();
  return hasOld() ? renameat(place_.directory, from, place_.directory, to) == 0
                  : renameToFree(place_.directory, from, to);
}

Replaced ReplacementFile::rename(const struct stat& own) {
  constexpr int kAttempts = 10;
  for (int attempt = 1; !moveToPlace(); ++attempt) {
    const int error = errno;
    struct stat now;
    // A server's answer can be lost, and the client asks for the same a second time.
    const bool isDone =
        isRemote_ &&
        fstatat(place_.directory, place_.name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
        isSameFile(now, own);
    if (isDone) break;
    errno = error;
    if (!hasOld() || isOldThere()) return failure();
    if (attempt == kAttempts) {
      keepBeside();
      errno = error;
      return Replaced::No;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(attempt * 10));
  }
  isNamed_ = false;
  return Replaced::Yes;
}

// Asks the server, since a client answers from its memory what needs no opening. Keeps errno.
bool ReplacementFile::isOldThere() const {
  const int error = errno;
  struct stat status;
  const char* const name = place_.name.c_str();
  const bool isListed = fstatat(place_.directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0;
  const bool asks = isRemote_ && isListed && S_ISREG(status.st_mode);
  const bool isThere =
      isListed &&
      (!asks || Descriptor(openRetrying(place_.directory, name, O_RDONLY | O_NOFOLLOW)));
  errno = error;
  return isThere;
}

// Leaves the complete version beside the place of a target that is lost, under a name that shows
// which file it is. No one would find the temporary name, and it is deleted a day later.
void ReplacementFile::keepBeside() {
  constexpr std::size_t kMostBytes = 200;
  const std::string name = place_.name.substr(0, kMostBytes) + ".new";
  const char* const from = temporaryName_.c_str();
  bool isKept = renameToFree(place_.directory, from, name.c_str());
  for (int number = 2; !isKept && errno == EEXIST && number <= kOpenAttempts; ++number) {
    isKept = renameToFree(place_.directory, from, (name + std::to_string(number)).c_str());
  }
  isNamed_ = false;
}

bool canBeReplaced(int directory, const std::string& name, int held) {
  struct statx mount;
  Place place{.directory = directory, .name = name};
  Descriptor copy(fcntl(held, F_DUPFD_CLOEXEC, 3));
  place.held = &copy;
  if (!copy || fstat(held, &place.status) != 0 || place.status.st_nlink != 1 ||
      statx(held, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, 0, &mount) != 0 ||
      (mount.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
    return false;
  }
  const ReplacementFile file(place, ReplacementFile::Named::AtTheEnd);
  return file && file.keepsAccess();
}

}  // namespace platform::native
