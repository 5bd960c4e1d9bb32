// A walk keeps one descriptor for each directory it is in. Deep trees must not exhaust them, so a
// directory kOpenLevels above the current one is closed, and opened again through `..` when the
// walk returns to it. `..` may meanwhile lead elsewhere, if the directory below was moved; the
// identity of the closed directory shows that, and it then stays closed.

#include "platform/open_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/listing/directory_reader.h"
#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/descriptor.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/new_file.h"
#include "platform/linux/opening/share_lock.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/trees/delete_file.h"
#include "platform/linux/trees/remove_directory.h"

using namespace platform::native;

namespace {

constexpr unsigned kOpenLevels = 32;
constexpr int kDirectoryFlags = O_RDONLY | O_DIRECTORY;

bool isDirectoryAt(int folder, const dirent64& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status;
  return fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

bool leadsToDirectoryAt(int folder, const char* path) {
  struct stat status;
  return fstatat(folder, path, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// A path from an open directory, or from AT_FDCWD.
struct Route {
  int folder;
  const char* path;
};

}  // namespace

struct platform::OpenDirectory::State {
  // Returns the shortest way to a path.
  Route routeTo(const NativePath& path) const {
    const std::string_view whole(path.c_str(), path.size());
    const bool isBelow = directory && !native.empty() && whole.size() > native.size() + 1 &&
                         whole.starts_with(native) && whole[native.size()] == '/';
    if (!isBelow) return {.folder = AT_FDCWD, .path = path.c_str()};
    return {.folder = directory.get(), .path = path.c_str() + native.size() + 1};
  }

  // Reads the status of a directory that was just created, and lets its owner write to it.
  void setNew() {
    isNew = fstat(directory.get(), &status) == 0;
    if (isNew && isReadOnly(status.st_mode)) {
      constexpr mode_t kBits = 07777;
      fchmod(directory.get(), (status.st_mode & kBits) | S_IWUSR);
    }
  }

  // Closes the directory, but remembers which one it was.
  void suspend() {
    if (directory && fstat(directory.get(), &status) == 0) directory = Descriptor();
  }

  // Opens a suspended directory again from a directory in it.
  void resume(int below) {
    Descriptor parent(openRetrying(below, "..", kDirectoryFlags | O_NOFOLLOW));
    struct stat now;
    if (!parent || fstat(parent.get(), &now) != 0 || !isSameFile(now, status)) return;
    directory = std::move(parent);
    entry = nullptr;
    listed = true;
  }

  // The ancestor `levels` above; null if there is none.
  State* ancestor(unsigned levels) {
    State* state = this;
    while (state != nullptr && levels-- > 0) state = state->parent;
    return state;
  }

  Descriptor directory;
  std::string native;  // its path; empty if it was opened from its parent
  bool isNew = false;
  State* parent = nullptr;
  DirectoryReader reader;
  const dirent64* entry = nullptr;
  bool listed = false;    // to its end, or as far as it can be read
  bool complete = false;  // to its end
  char name[MAX_PATH] = {};
  struct stat status {};  // while it is suspended, and of a new one
};

namespace platform {

OpenDirectory::OpenDirectory(const std::string& path, LastLink link, const OpenDirectory* above)
    : state_(std::make_unique<State>()) {
  const NativePath native(path.c_str());
  if (!native.valid()) {
    SetLastError(native.error());
    return;
  }
  const int flags = kDirectoryFlags | (link == LastLink::Refused ? O_NOFOLLOW : 0);
  const Route route = (above != nullptr ? above : this)->state_->routeTo(native);
  state_->directory = Descriptor(openRetrying(route.folder, route.path, flags));
  if (!state_->directory) SetLastError(errorOnPath(native, errno));
  state_->native = native.c_str();
}

OpenDirectory::OpenDirectory(OpenDirectory& parent, const std::string& storedName)
    : state_(std::make_unique<State>()) {
  if (!parent) {
    SetLastError(ERROR_INVALID_HANDLE);
    return;
  }
  state_->parent = parent.state_.get();
  state_->directory = Descriptor(openRetrying(parent.state_->directory.get(), storedName.c_str(),
                                              kDirectoryFlags | O_NOFOLLOW));
  if (!state_->directory) failWithErrno();
  State* const ancestor = state_->ancestor(kOpenLevels);
  if (ancestor != nullptr) ancestor->suspend();
}

OpenDirectory OpenDirectory::make(const std::string& path, const OpenDirectory* above) {
  const NativePath native(path.c_str());
  if (!native.valid()) return OpenDirectory(path, LastLink::Followed);
  const Route route = above != nullptr ? above->state_->routeTo(native)
                                       : Route{.folder = AT_FDCWD, .path = native.c_str()};
  constexpr mode_t kAll = 0777;
  const int error = mkdirat(route.folder, route.path, kAll) == 0 ? 0 : errno;
  OpenDirectory made(path, error == 0 ? LastLink::Refused : LastLink::Followed, above);
  if (made && error == 0) made.state_->setNew();
  const bool isMissing = !made && error != 0 && error != EEXIST;
  if (isMissing && !leadsToDirectoryAt(route.folder, route.path)) {
    // Only a folder on the way can be missing.
    SetLastError(error == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(error));
  }
  return made;
}

OpenDirectory::OpenDirectory(OpenDirectory&&) noexcept = default;

OpenDirectory::~OpenDirectory() {
  if (!state_ || state_->parent == nullptr || state_->parent->directory) return;
  state_->parent->resume(state_->directory.get());
}

OpenDirectory::operator bool() const { return static_cast<bool>(state_->directory); }

bool OpenDirectory::isNew() const { return state_->isNew; }

bool OpenDirectory::identity(FileIdentity& identity) const {
  if (!*this) return false;
  if (!state_->isNew && fstat(state_->directory.get(), &state_->status) != 0) return false;
  identity = identityOf(state_->status);
  return true;
}

bool OpenDirectory::next() {
  if (!*this || state_->listed) return false;
  for (;;) {
    state_->entry = state_->reader.next(state_->directory.get());
    if (state_->entry == nullptr) {
      state_->listed = true;
      state_->complete = errno == 0;
      return false;
    }
    if (!isDots(state_->entry->d_name)) return true;
  }
}

bool OpenDirectory::isComplete() const { return state_->complete; }

const char* OpenDirectory::name() const {
  char* const name = state_->name;
  if (displayName(state_->entry->d_name, name, sizeof(state_->name)) == 0) *name = '\0';
  return name;
}

std::string OpenDirectory::storedName() const { return state_->entry->d_name; }

bool OpenDirectory::isDirectory() const {
  return isDirectoryAt(state_->directory.get(), *state_->entry);
}

bool OpenDirectory::leadsToDirectory() const {
  const unsigned char type = state_->entry->d_type;
  return (type == DT_LNK || type == DT_UNKNOWN) && !isDirectory() &&
         leadsToDirectoryAt(state_->directory.get(), state_->entry->d_name);
}

bool OpenDirectory::isRegular() const { return state_->entry->d_type == DT_REG; }

bool OpenDirectory::canOpen() const {
  const auto probe = state_->entry->d_type == DT_REG ? probeRegular : probeExisting;
  return probe(state_->directory.get(), state_->entry->d_name, FILE_READ_DATA,
               FILE_SHARE_READ | FILE_SHARE_WRITE);
}

bool OpenDirectory::lastWrite(FILETIME& time) const {
  struct statx status;
  if (statx(state_->directory.get(), state_->entry->d_name, AT_STATX_DONT_SYNC, STATX_MTIME,
            &status) != 0) {
    return failWithErrno() != FALSE;
  }
  time = fileTimeOf(status.stx_mtime);
  return true;
}

bool OpenDirectory::deleteEntry() {
  const auto remove = isRegular() ? deleteRegularAt : deleteAt;
  const DWORD error = remove(state_->directory.get(), state_->entry->d_name);
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

bool OpenDirectory::deleteIfOpenable() {
  const int folder = state_->directory.get();
  const char* const name = state_->entry->d_name;
  const DWORD error = isRegular() ? deleteUnheldAt(folder, name) : DWORD{ERROR_SHARING_VIOLATION};
  if (error == ERROR_SHARING_VIOLATION) return canOpen() && deleteEntry();
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

bool OpenDirectory::canDelete() const {
  const DWORD error = deletionError(state_->directory.get(), state_->entry->d_name);
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

bool OpenDirectory::copyNew(const OpenDirectory& source, const std::string& storedName,
                            WrittenFiles& written, WrittenFiles::Name id,
                            const CopyProgress& progress) {
  if (!*this || !source) return fail(ERROR_INVALID_HANDLE) != FALSE;
  const char* const name = storedName.c_str();
  const Descriptor from(openRetrying(source.state_->directory.get(), name, O_RDONLY | O_NOFOLLOW));
  struct stat status;
  if (!from || fstat(from.get(), &status) != 0) return failWithErrno() != FALSE;
  if (!isOpenable(status, false)) return fail(ERROR_ACCESS_DENIED) != FALSE;
  if (!shareAvailable(from.get(), FILE_READ_DATA, kShareAll)) {
    return fail(ERROR_SHARING_VIOLATION) != FALSE;
  }
  constexpr mode_t kPermissions = 0777;
  NewFile to(state_->directory.get(), name, status.st_mode & kPermissions);
  if (!to && errno == EEXIST) return fail(ERROR_FILE_EXISTS) != FALSE;
  if (!to || !to.copyFrom(from.get(), status, progress)) return failWithErrno() != FALSE;
  written.add(identityOf(to.status()), id);
  return true;
}

OpenDirectory::Named OpenDirectory::find(const std::string& storedName) const {
  struct stat status;
  if (!*this ||
      fstatat(state_->directory.get(), storedName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return {};
  }
  if (status.st_nlink != 1) return {.exists = true};
  return {.exists = true, .file = identityOf(status)};
}

void OpenDirectory::addWritten(const std::string& storedName, WrittenFiles& written,
                               WrittenFiles::Name id) const {
  struct stat status;
  if (*this &&
      fstatat(state_->directory.get(), storedName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    written.add(identityOf(status), id);
  }
}

bool OpenDirectory::removeDirectory(const std::string& storedName) {
  if (!*this) return fail(ERROR_INVALID_HANDLE) != FALSE;
  const DWORD error = removeDirectoryAt(state_->directory.get(), storedName.c_str());
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

}  // namespace platform
