#include "platform/new_version.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string_view>

#include "platform/linux/descriptor.h"
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
  std::string versionPath;   // native
  bool isCreated = false;
};

NewVersion::NewVersion(const std::string& path) : state_(std::make_unique<State>()) {
  state_->path = path;
  state_->original.reset(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!state_->original) {
    const DWORD error = GetLastError();
    state_->isFirst = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
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
  state_->versionPath = state_->originalPath.substr(0, state_->originalPath.rfind('/') + 1) +
                        temporaryNameFor(state_->originalStatus);
  unlink(state_->versionPath.c_str());
}

NewVersion::~NewVersion() {
  if (state_->isCreated) unlink(state_->versionPath.c_str());
}

NewVersion::operator bool() const { return state_->isFirst || state_->original; }

bool NewVersion::isFirst() const { return state_->isFirst; }

std::string NewVersion::create() {
  if (state_->isFirst) return state_->path;
  const char* const version = state_->versionPath.c_str();
  constexpr mode_t kOwnerOnly = 0600;
  const Descriptor file(
      ::open(version, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
  char text[PATH_MAX * 3];
  if (file && displayName(version, text, sizeof(text)) != 0) {
    state_->isCreated = true;
    return text;
  }
  state_->original.reset();
  return state_->path;
}

bool NewVersion::putInPlace() {
  if (!state_->isCreated) return true;
  const char* const version = state_->versionPath.c_str();
  const struct stat& old = state_->originalStatus;
  // Only the superuser can give a file away; for other users it becomes theirs.
  [[maybe_unused]] const int ignored = chown(version, old.st_uid, old.st_gid);
  struct stat now;
  if (chmod(version, old.st_mode & 07777) != 0 || stat(state_->originalPath.c_str(), &now) != 0) {
    return failWithErrno() != FALSE;
  }
  // A program that does not use the locks may have put another file there.
  if (now.st_dev != old.st_dev || now.st_ino != old.st_ino) {
    return fail(ERROR_SHARING_VIOLATION) != FALSE;
  }
  if (rename(version, state_->originalPath.c_str()) != 0) return failWithErrno() != FALSE;
  state_->isCreated = false;
  return true;
}

}  // namespace platform
