#include "platform/confined_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/opening/new_file.h"
#include "platform/linux/opening/remote_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/replacing/overwriting.h"
#include "platform/linux/replacing/replacement_file.h"
#include "platform/linux/system/last_error.h"
#include "platform/relative_path.h"
#include "platform/unique_handle.h"
#include "platform/written_files.h"

namespace platform {

// The directories from the confined one down to that of the last file. Files of one directory
// usually follow each other, so most of them open none.
struct ConfinedDirectory::State {
  struct Level {
    std::string name;
    native::Descriptor directory;
  };

  native::Descriptor root;
  std::vector<Level> levels;
  WrittenFiles written;

  int deepest() const { return levels.empty() ? root.get() : levels.back().directory.get(); }
  bool descend(std::string_view path);
  Result writeExisting(const char* name, const Fill& fill, Existing existing,
                       WrittenFiles::Name id);
};

}  // namespace platform

namespace platform::native {
namespace {

constexpr DWORD kReadWrite = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA;

ConfinedDirectory::Result failedWith(DWORD error) {
  fail(error);
  return {ConfinedDirectory::Outcome::Failed};
}

ConfinedDirectory::Result failedWithErrno() {
  failWithErrno();
  return {ConfinedDirectory::Outcome::Failed};
}

// Opens a directory in the open directory `parent`, creating it if it is missing.
Descriptor openOrCreateDirectory(int parent, const char* name) {
  for (int attempt = 1;; ++attempt) {
    Descriptor directory(::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory || errno != ENOENT || attempt == kOpenAttempts) return directory;
    constexpr mode_t kPermissions = 0777;
    if (mkdirat(parent, name, kPermissions) != 0 && errno != EEXIST) return directory;
  }
}

// Runs `fill` on a handle that does not own the descriptor.
bool fillFile(int descriptor, const ConfinedDirectory::Fill& fill) {
  const HANDLE handle = makeFileHandle(descriptor, kReadWrite);
  const bool filled = handle != INVALID_HANDLE_VALUE && fill(handle);
  endOpening(handle);
  return filled;
}

// Sets the status of the new file. False with errno EEXIST, and `fill` not called, if the name is
// in use.
bool writeNew(int directory, const char* name, const ConfinedDirectory::Fill& fill,
              struct stat& status) {
  constexpr mode_t kPermissions = 0666;
  NewFile file(directory, name, kPermissions);
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
  return file.close();
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

// Writes a new version over the file that it cannot replace.
bool overwriteBy(const ReplacementFile& version, const struct stat& old, Descriptor& held) {
  struct stat status;
  return fstat(version.descriptor(), &status) == 0 &&
         overwriteContent(version.descriptor(), status.st_size, old, held.get()) && held.close();
}

// Replaces the file or link of that name, which has the status `old`. A link itself is replaced,
// never the file that it leads to.
bool replaceExisting(int directory, const char* name, struct stat old,
                     const ConfinedDirectory::Fill& fill) {
  const bool isLink = S_ISLNK(old.st_mode);
  Descriptor held;
  if (!isLink) {
    held = lockForReplacement(directory, name, old);
    if (!held) return false;
  }
  ReplacementFile file(
      {.directory = directory, .name = name, .status = old, .held = isLink ? nullptr : &held},
      ReplacementFile::Named::AtTheEnd);
  if (!file) return failWithErrno() != FALSE;
  // Another name of the file can be outside the directory.
  const bool isConfined = old.st_nlink == 1;
  if (!file.keepsOwner() && !isConfined) return fail(ERROR_ACCESS_DENIED) != FALSE;
  if (!fillFile(file.descriptor(), fill)) return false;
  Replaced result = file.keepsOwner() ? file.complete() : Replaced::Refused;
  if (result == Replaced::Refused && isConfined) {
    return overwriteBy(file, old, held) || failWithErrno() != FALSE;
  }
  if (result == Replaced::Yes) result = file.putInPlace();
  return result == Replaced::Yes || failWithErrno() != FALSE;
}

}  // namespace
}  // namespace platform::native

namespace platform {

using namespace platform::native;

// Opens the directories of `path`, a native path without doubled separators.
bool ConfinedDirectory::State::descend(std::string_view path) {
  std::size_t depth = 0;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    if (name == ".") continue;
    if (depth == levels.size() || levels[depth].name != name) {
      levels.resize(depth);
      Level level{.name = std::string(name), .directory = {}};
      level.directory = openOrCreateDirectory(deepest(), level.name.c_str());
      if (!level.directory) return failWithErrno() != FALSE;
      levels.push_back(std::move(level));
    }
    ++depth;
  }
  levels.resize(depth);
  return true;
}

// Writes to a name that is in use.
ConfinedDirectory::Result ConfinedDirectory::State::writeExisting(const char* name,
                                                                  const Fill& fill,
                                                                  Existing existing,
                                                                  WrittenFiles::Name id) {
  struct stat status;
  if (fstatat(deepest(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return failedWithErrno();
  const WrittenFiles::Name former = written.nameOf(identityOf(status));
  // A file with several hard links may have both names.
  if (former != WrittenFiles::kNone && former != id && status.st_nlink == 1) {
    fail(ERROR_FILE_EXISTS);
    return {Outcome::SameFile, former};
  }
  if (existing == Existing::Kept) {
    fail(ERROR_FILE_EXISTS);
    return {S_ISDIR(status.st_mode) ? Outcome::Failed : Outcome::Kept};
  }
  if (!replaceExisting(deepest(), name, status, fill)) return {Outcome::Failed};
  if (fstatat(deepest(), name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    written.add(identityOf(status), id);
  }
  return {Outcome::Written};
}

ConfinedDirectory::ConfinedDirectory(const std::string& path) : state_(std::make_unique<State>()) {
  // With the dot an empty text and a bare drive are directories too.
  const NativePath native((path + '.').c_str());
  if (!native.valid()) {
    SetLastError(native.error());
    return;
  }
  state_->root = Descriptor(::open(native.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!state_->root) SetLastError(errorOnPath(native, errno));
}

ConfinedDirectory::~ConfinedDirectory() = default;

ConfinedDirectory::operator bool() const { return static_cast<bool>(state_->root); }

bool ConfinedDirectory::createDirectory(std::string_view name) {
  if (hasParentComponent(name)) return fail(ERROR_ACCESS_DENIED) != FALSE;
  const NativePath path((".\\" + std::string(name)).c_str());
  if (!path.valid()) return fail(path.error()) != FALSE;
  return state_->descend({path.c_str(), path.size()});
}

ConfinedDirectory::Result ConfinedDirectory::write(std::string_view name, const Fill& fill,
                                                   Existing existing, WrittenFiles::Name id) {
  // NativePath would resolve "..", as text.
  if (hasParentComponent(name)) return failedWith(ERROR_ACCESS_DENIED);
  // The dot keeps the start of the name from being taken for a drive or a share.
  const NativePath path((".\\" + std::string(name)).c_str());
  if (!path.valid()) return failedWith(path.error());
  const std::string_view whole(path.c_str(), path.size());
  const std::size_t fileStart = path.hadTrailingSeparator() ? whole.size() : whole.rfind('/') + 1;
  if (!state_->descend(whole.substr(0, fileStart))) return {Outcome::Failed};
  const char* const file = path.c_str() + fileStart;
  if (*file == '\0') return failedWith(ERROR_PATH_NOT_FOUND);
  struct stat status;
  if (writeNew(state_->deepest(), file, fill, status)) {
    state_->written.add(identityOf(status), id);
    return {Outcome::Written};
  }
  return errno == EEXIST ? state_->writeExisting(file, fill, existing, id) : failedWithErrno();
}

}  // namespace platform
