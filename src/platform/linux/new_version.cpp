#include "platform/new_version.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/abandoned_files.h"
#include "platform/linux/attributes.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/durability.h"
#include "platform/linux/existing_file.h"
#include "platform/linux/file_handle.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/linux/replacement_file.h"
#include "platform/unique_handle.h"

namespace platform {

using namespace platform::native;

struct NewVersion::State {
  std::string path;
  bool isFirst = false;
  FileHandle original;
  struct stat originalStatus {};
  std::string originalPath;  // native, with all links resolved
  std::string versionPath;   // native; empty if the file can only be written under its own name
  Descriptor version;        // open while the new version has its own name
};

namespace {

// Returns another name for each process and call.
std::string nameOfFirst() {
  static std::atomic<unsigned> calls{0};
  char name[48];
  std::snprintf(name, sizeof(name), ".~copy%x-%x.tmp", static_cast<unsigned>(getpid()), ++calls);
  return name;
}

// True for the names that nameOfFirst makes, if the name has their beginning and end.
bool isNameOfFirst(std::string_view name) {
  constexpr std::size_t kBeginning = sizeof(".~copy") - 1;
  constexpr std::size_t kEnd = sizeof(".tmp") - 1;
  constexpr std::string_view kDigits = "0123456789abcdef";
  const std::string_view numbers = name.substr(kBeginning, name.size() - kBeginning - kEnd);
  const std::size_t dash = numbers.find_first_not_of(kDigits);
  return dash != 0 && dash + 1 < numbers.size() && numbers[dash] == '-' &&
         numbers.find_first_not_of(kDigits, dash + 1) == std::string_view::npos;
}

// Renames a file to a name that must be free.
bool renameToFree(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  // Some file systems cannot do both in one step.
  struct stat status;
  return errno == EINVAL && lstat(to, &status) != 0 && rename(from, to) == 0;
}

}  // namespace

NewVersion::NewVersion(const std::string& path) : state_(std::make_unique<State>()) {
  state_->path = path;
  state_->original.reset(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!state_->original) {
    const DWORD error = GetLastError();
    state_->isFirst = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    const NativePath native(path.c_str());
    struct stat link;
    // The file that a dangling link leads to can only be created through the link.
    if (state_->isFirst && native.valid() && lstat(native.c_str(), &link) != 0) {
      state_->originalPath = native.c_str();
      state_->versionPath = folderOf(state_->originalPath) + '/' + nameOfFirst();
    }
    return;
  }
  char real[PATH_MAX];
  if (fstat(descriptorOf(state_->original.get()), &state_->originalStatus) != 0 ||
      realpath(NativePath(path.c_str()).c_str(), real) == nullptr) {
    state_->original.reset();
    return;
  }
  // The name is also the one that removeUnfinishedVersion() deletes, so that nothing that a killed
  // process left remains for long.
  state_->originalPath = real;
  state_->versionPath =
      folderOf(state_->originalPath) + '/' + temporaryNameFor(state_->originalStatus);
  unlink(state_->versionPath.c_str());
}

NewVersion::~NewVersion() {
  if (state_->version) unlink(state_->versionPath.c_str());
}

NewVersion::operator bool() const { return state_->isFirst || state_->original; }

bool NewVersion::canReplace() const {
  if (state_->isFirst) return true;
  const Descriptor folder(
      ::open(folderOf(state_->originalPath).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return folder && canBeReplaced(folder.get(), descriptorOf(state_->original.get()));
}

std::string NewVersion::create() {
  if (state_->versionPath.empty()) return state_->path;
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  constexpr mode_t kOwnerOnly = 0600;
  constexpr mode_t kPermissions = 0666;
  const mode_t mode = state_->isFirst ? kPermissions : kOwnerOnly;
  state_->version = Descriptor(::open(state_->versionPath.c_str(), kFlags, mode));
  // A process with the same identifier, in another container or before a restart, has the name.
  for (int attempt = 1; !state_->version && errno == EEXIST && attempt < kOpenAttempts; ++attempt) {
    state_->versionPath = folderOf(state_->originalPath) + '/' + nameOfFirst();
    state_->version = Descriptor(::open(state_->versionPath.c_str(), kFlags, mode));
  }
  char text[PATH_MAX * 3];
  if (state_->version && displayName(state_->versionPath.c_str(), text, sizeof(text)) != 0) {
    deleteAbandonedFiles(text, ".~copy*.tmp", isNameOfFirst);
    return text;
  }
  if (!state_->version && !isRefusal(errno)) {
    failWithErrno();
    return {};
  }
  state_->original.reset();
  return state_->path;
}

bool NewVersion::putInPlace() {
  if (!state_->version) return true;
  const char* const version = state_->versionPath.c_str();
  const char* const path = state_->originalPath.c_str();
  if (!commitContent(state_->version.get())) return failWithErrno() != FALSE;
  if (state_->isFirst) {
    if (!renameToFree(version, path)) return failWithErrno() != FALSE;
  } else {
    const struct stat& old = state_->originalStatus;
    // Only the superuser can give a file away; for other users it becomes theirs.
    [[maybe_unused]] const int ignored = chown(version, old.st_uid, old.st_gid);
    struct stat now;
    if (chmod(version, old.st_mode & 07777) != 0 || stat(path, &now) != 0) {
      return failWithErrno() != FALSE;
    }
    // A program that does not use the locks may have put another file there.
    if (!isSameFile(now, old)) {
      return fail(ERROR_SHARING_VIOLATION) != FALSE;
    }
    if (rename(version, path) != 0) return failWithErrno() != FALSE;
  }
  state_->version = Descriptor();
  commitNameOf(path);
  return true;
}

}  // namespace platform
