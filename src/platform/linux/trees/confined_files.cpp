#include "platform/linux/trees/confined_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/metadata/new_metadata.h"
#include "platform/linux/opening/descriptor.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/opening/new_file.h"
#include "platform/linux/opening/remote_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/replacing/carry_over.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/replacing/overwriting.h"
#include "platform/linux/replacing/replacement_file.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

constexpr DWORD kReadWrite = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA;

// Runs `fill` on a handle that does not own the descriptor.
bool fillFile(int descriptor, const ConfinedDirectory::Fill& fill) {
  const HANDLE handle = makeFileHandle(descriptor, kReadWrite);
  const bool filled = handle != INVALID_HANDLE_VALUE && fill(handle);
  endOpening(handle);
  return filled;
}

// Opens a regular file that is to be replaced and locks it, so that no other process uses it
// meanwhile. Fails if it is read-only or in use.
Descriptor lockForReplacement(int directory, const char* name, struct stat& status) {
  if (!isOpenable(status, true)) {
    fail(ERROR_ACCESS_DENIED);
    return {};
  }
  Descriptor file(openRetrying(directory, name, O_RDWR | O_NOFOLLOW));
  if (!file || fstat(file.get(), &status) != 0) {
    failWithErrno();
    return {};
  }
  if (!isOpenable(status, true)) {
    fail(ERROR_ACCESS_DENIED);
    return {};
  }
  if (acquireShare(file, kReadWrite, 0, mayBeRemote(status))) return file;
  fail(ERROR_SHARING_VIOLATION);
  return {};
}

// Writes a new version over the file that it cannot replace. That file keeps its permissions, and so
// must not have more than the new one is to have. The version is committed first, since a network
// file system may find only then that it cannot store it, and then would return zeros.
bool overwriteBy(const ReplacementFile& version, const struct stat& old, Descriptor& held,
                 const NewMetadata& metadata) {
  constexpr mode_t kPermissions = 0777;
  const bool exposes = metadata.mode && ((old.st_mode & ~*metadata.mode & kPermissions) != 0 ||
                                         hasAccessList(held.get()));
  if (exposes) {
    errno = EACCES;
    return false;
  }
  struct stat status;
  return commitContent(version.descriptor()) && fstat(version.descriptor(), &status) == 0 &&
         overwriteContent(version.descriptor(), status.st_size, old, held.get()) &&
         applyLastWrite(held.get(), metadata, old.st_mtim) && held.close();
}

}  // namespace

bool writeNew(int directory, const char* name, const ConfinedDirectory::Fill& fill,
              const NewMetadata& metadata, struct stat& status) {
  constexpr mode_t kPermissions = 0666;
  NewFile file(directory, name, creationMode(metadata, kPermissions));
  if (!file) return false;
  status = file.status();
  if (!acquireShare(file.held(), kReadWrite, 0, false)) {
    errno = EBUSY;
    return false;
  }
  if (!fillFile(file.descriptor(), fill)) {
    errno = EIO;
    return false;
  }
  return applyLastWrite(file.descriptor(), metadata, status.st_mtim) &&
         applyMode(file.descriptor(), metadata.mode, status.st_mode) && file.close();
}

bool replaceExisting(int directory, const char* name, struct stat old,
                     const ConfinedDirectory::Fill& fill, const NewMetadata& metadata) {
  const bool isLink = S_ISLNK(old.st_mode);
  Descriptor held;
  if (!isLink) {
    held = lockForReplacement(directory, name, old);
    if (!held) return false;
  }
  ReplacementFile file({.directory = directory,
                        .name = name,
                        .status = old,
                        .held = isLink ? nullptr : &held,
                        .mode = metadata.mode},
                       ReplacementFile::Named::AtTheEnd);
  if (!file) return failWithErrno() != FALSE;
  // Another name of the file can be outside the directory.
  const bool isConfined = old.st_nlink == 1;
  if (!file.keepsOwner() && !isConfined) return fail(ERROR_ACCESS_DENIED) != FALSE;
  if (!fillFile(file.descriptor(), fill)) return false;
  if (!applyLastWrite(file.descriptor(), metadata, old.st_mtim)) return failWithErrno() != FALSE;
  Replaced result = file.keepsOwner() ? file.complete() : Replaced::Refused;
  if (result == Replaced::Refused && isConfined) {
    return overwriteBy(file, old, held, metadata) || failWithErrno() != FALSE;
  }
  if (result == Replaced::Yes) result = file.putInPlace();
  return result == Replaced::Yes || failWithErrno() != FALSE;
}

bool replaceExistingByLink(int directory, const char* name, struct stat old, const NewLink& link) {
  Descriptor held;
  if (!S_ISLNK(old.st_mode)) {
    held = lockForReplacement(directory, name, old);
    if (!held) return false;
  }
  return replaceByLink(directory, name, old, link) || failWithErrno() != FALSE;
}

}  // namespace platform::native
