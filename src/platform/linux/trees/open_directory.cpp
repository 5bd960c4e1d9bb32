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

#include "platform/linux/listing/directory_stream.h"
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

bool isDirectoryAt(int folder, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status;
  return fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

}  // namespace

struct platform::OpenDirectory::State {
  // Closes the directory, but remembers which one it was.
  void suspend() {
    if (stream && fstat(dirfd(stream.get()), &identity) == 0) stream.reset();
  }

  // Opens a suspended directory again from a directory in it.
  void resume(int below) {
    Descriptor parent(openRetrying(below, "..", kDirectoryFlags | O_NOFOLLOW));
    struct stat status;
    if (!parent || fstat(parent.get(), &status) != 0 || !isSameFile(status, identity)) return;
    stream = streamOf(std::move(parent));
    entry = nullptr;
    listed = true;
  }

  // The ancestor `levels` above; null if there is none.
  State* ancestor(unsigned levels) {
    State* state = this;
    while (state != nullptr && levels-- > 0) state = state->parent;
    return state;
  }

  DirectoryStream stream;
  State* parent = nullptr;
  const dirent* entry = nullptr;
  bool listed = false;    // to its end, or as far as it can be read
  bool complete = false;  // to its end
  char name[MAX_PATH] = {};
  struct stat identity {};
};

namespace platform {

OpenDirectory::OpenDirectory(const std::string& path, LastLink link)
    : state_(std::make_unique<State>()) {
  const NativePath native(path.c_str());
  if (!native.valid()) {
    SetLastError(native.error());
    return;
  }
  const int flags = kDirectoryFlags | (link == LastLink::Refused ? O_NOFOLLOW : 0);
  state_->stream = streamOf(Descriptor(openRetrying(AT_FDCWD, native.c_str(), flags)));
  if (!state_->stream) SetLastError(errorOnPath(native, errno));
}

OpenDirectory::OpenDirectory(OpenDirectory& parent, const std::string& storedName)
    : state_(std::make_unique<State>()) {
  if (!parent) {
    SetLastError(ERROR_INVALID_HANDLE);
    return;
  }
  state_->parent = parent.state_.get();
  state_->stream = streamOf(Descriptor(openRetrying(
      dirfd(parent.state_->stream.get()), storedName.c_str(), kDirectoryFlags | O_NOFOLLOW)));
  if (!state_->stream) failWithErrno();
  State* const ancestor = state_->ancestor(kOpenLevels);
  if (ancestor != nullptr) ancestor->suspend();
}

OpenDirectory::OpenDirectory(OpenDirectory&&) noexcept = default;

OpenDirectory::~OpenDirectory() {
  if (!state_ || !state_->stream || state_->parent == nullptr || state_->parent->stream) return;
  state_->parent->resume(dirfd(state_->stream.get()));
}

OpenDirectory::operator bool() const { return state_->stream != nullptr; }

bool OpenDirectory::next() {
  if (!state_->stream || state_->listed) return false;
  for (;;) {
    errno = 0;
    state_->entry = readdir(state_->stream.get());
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
  return isDirectoryAt(dirfd(state_->stream.get()), *state_->entry);
}

bool OpenDirectory::isRegular() const { return state_->entry->d_type == DT_REG; }

bool OpenDirectory::canOpen() const {
  const auto probe = state_->entry->d_type == DT_REG ? probeRegular : probeExisting;
  return probe(dirfd(state_->stream.get()), state_->entry->d_name, FILE_READ_DATA,
               FILE_SHARE_READ | FILE_SHARE_WRITE);
}

bool OpenDirectory::lastWrite(FILETIME& time) const {
  struct statx status;
  if (statx(dirfd(state_->stream.get()), state_->entry->d_name, AT_STATX_DONT_SYNC, STATX_MTIME,
            &status) != 0) {
    return failWithErrno() != FALSE;
  }
  time = fileTimeOf(status.stx_mtime);
  return true;
}

bool OpenDirectory::deleteEntry() {
  const auto remove = isRegular() ? deleteRegularAt : deleteAt;
  const DWORD error = remove(dirfd(state_->stream.get()), state_->entry->d_name);
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

bool OpenDirectory::canDelete() const {
  const DWORD error = deletionError(dirfd(state_->stream.get()), state_->entry->d_name);
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

bool OpenDirectory::copyNew(const OpenDirectory& source, const std::string& storedName,
                            WrittenFiles& written, WrittenFiles::Name id,
                            const CopyProgress& progress) {
  if (!*this || !source) return fail(ERROR_INVALID_HANDLE) != FALSE;
  const char* const name = storedName.c_str();
  const Descriptor from(
      openRetrying(dirfd(source.state_->stream.get()), name, O_RDONLY | O_NOFOLLOW));
  struct stat status;
  if (!from || fstat(from.get(), &status) != 0) return failWithErrno() != FALSE;
  if (!isOpenable(status, false)) return fail(ERROR_ACCESS_DENIED) != FALSE;
  if (!shareAvailable(from.get(), FILE_READ_DATA, kShareAll)) {
    return fail(ERROR_SHARING_VIOLATION) != FALSE;
  }
  constexpr mode_t kPermissions = 0777;
  NewFile to(dirfd(state_->stream.get()), name, status.st_mode & kPermissions);
  if (!to && errno == EEXIST) return fail(ERROR_FILE_EXISTS) != FALSE;
  if (!to || !to.copyFrom(from.get(), status, progress)) return failWithErrno() != FALSE;
  written.add(identityOf(to.status()), id);
  return true;
}

WrittenFiles::Name OpenDirectory::writtenAs(const std::string& storedName,
                                            const WrittenFiles& written) const {
  struct stat status;
  const bool isAlone =
      *this &&
      fstatat(dirfd(state_->stream.get()), storedName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
      status.st_nlink == 1;
  return isAlone ? written.nameOf(identityOf(status)) : WrittenFiles::kNone;
}

void OpenDirectory::addWritten(const std::string& storedName, WrittenFiles& written,
                               WrittenFiles::Name id) const {
  struct stat status;
  if (*this &&
      fstatat(dirfd(state_->stream.get()), storedName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    written.add(identityOf(status), id);
  }
}

bool OpenDirectory::removeDirectory(const std::string& storedName) {
  if (!*this) return fail(ERROR_INVALID_HANDLE) != FALSE;
  const DWORD error = removeDirectoryAt(dirfd(state_->stream.get()), storedName.c_str());
  return error == ERROR_SUCCESS || fail(error) != FALSE;
}

}  // namespace platform
