#include "platform/linux/replacing/carry_over.h"

#include <sys/xattr.h>
#include <unistd.h>

#include "platform/linux/metadata/new_metadata.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

namespace platform::native {
namespace {

using Bytes = std::vector<char>;

constexpr char kAcl[] = "system.posix_acl_access";
// The list of a file on NFSv4, which has no other.
constexpr char kNfsAcl[] = "system.nfs4_acl";

bool isAbsence(int error) { return error == ENODATA || error == EOPNOTSUPP; }

// Reads by `read(buffer, size)`, which returns the size that it needs if the buffer is null. The
// size may change between the calls. Nothing, with errno, on failure.
template <typename Read>
std::optional<Bytes> readAll(Read read) {
  Bytes bytes;
  for (;;) {
    const ssize_t size = read(nullptr, std::size_t{0});
    if (size < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(size));
    if (size == 0) return bytes;
    const ssize_t count = read(bytes.data(), bytes.size());
    if (count < 0 && errno == ERANGE) continue;
    if (count < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
  }
}

std::optional<Bytes> attributeOf(int file, const char* name) {
  return readAll(
      [&](char* buffer, std::size_t size) { return fgetxattr(file, name, buffer, size); });
}

bool carryAttribute(int from, const char* name, int to) {
  const std::optional<Bytes> value = attributeOf(from, name);
  // Another process may have removed it since it was listed.
  if (!value) return isAbsence(errno);
  return fsetxattr(to, name, value->data(), value->size(), 0) == 0;
}

bool carryUserAttributes(int from, int to) {
  constexpr std::string_view kUser = "user.";
  const std::optional<Bytes> list =
      readAll([&](char* buffer, std::size_t size) { return flistxattr(from, buffer, size); });
  if (!list) return isAbsence(errno);
  const char* const end = list->data() + list->size();
  for (const char* name = list->data(); name != end; name += std::strlen(name) + 1) {
    if (std::string_view(name).starts_with(kUser) && !carryAttribute(from, name, to)) return false;
  }
  return true;
}

bool removeAcl(int file) {
  if (fgetxattr(file, kAcl, nullptr, 0) < 0) return isAbsence(errno);
  return fremovexattr(file, kAcl) == 0 || isAbsence(errno);
}

bool carryAcl(int from, int to, bool isRemote) {
  const std::optional<Bytes> acl = attributeOf(from, kAcl);
  if (acl && !acl->empty()) return fsetxattr(to, kAcl, acl->data(), acl->size(), 0) == 0;
  if (!acl && !isAbsence(errno)) return false;
  return removeAcl(to) && (!isRemote || carryAttribute(from, kNfsAcl, to));
}

}  // namespace

bool carryOwner(const struct stat& old, int to) {
  struct stat own;
  if (fstat(to, &own) != 0) return false;
  const bool isCarried = own.st_uid == old.st_uid && own.st_gid == old.st_gid;
  return isCarried || fchown(to, old.st_uid, old.st_gid) == 0;
}

bool canCarryAccess(int from, int to, bool isRemote) {
  constexpr mode_t kOwnerOnly = 0600;
  const bool hasAcl = hasAccessList(from) || (isRemote && fgetxattr(from, kNfsAcl, nullptr, 0) > 0);
  return !hasAcl || (carryAcl(from, to, isRemote) && fchmod(to, kOwnerOnly) == 0);
}

bool carryAccess(int from, const struct stat& old, mode_t removed, int to, bool isRemote) {
  constexpr mode_t kWithoutSetId = 01777;
  return carryUserAttributes(from, to) && carryAcl(from, to, isRemote) &&
         fchmod(to, old.st_mode & kWithoutSetId & ~removed) == 0;
}

bool setAccess(int from, mode_t mode, int to) {
  constexpr mode_t kOwnerOnly = 0600;
  return carryUserAttributes(from, to) && removeAcl(to) && applyMode(to, mode, kOwnerOnly);
}

bool hasAccessList(int file) { return fgetxattr(file, kAcl, nullptr, 0) > 0; }

bool cannotCarry(int error) {
  return error == EPERM || error == EACCES || error == EINVAL || error == EOPNOTSUPP;
}

}  // namespace platform::native
