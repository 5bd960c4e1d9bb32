#include "platform/new_version.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <optional>

#include "platform/abandoned_files.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/descriptor.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/replacing/replacement_file.h"
#include "platform/linux/replacing/version_name.h"
#include "platform/linux/system/last_error.h"

namespace platform {

using namespace platform::native;

struct NewVersion::State {
  // Opens the directory of the file, if it exists.
  void openDirectory() {
    directory =
        Descriptor(openRetrying(AT_FDCWD, folderOf(originalPath).c_str(), O_PATH | O_DIRECTORY));
  }

  std::string path;
  bool isFirst = false;
  Descriptor original;
  struct stat originalStatus {};
  std::string originalPath;  // native, with all links resolved
  Descriptor directory;      // none if the file can only be written under its own name
  std::optional<ReplacementFile> version;
};

NewVersion::NewVersion(const std::string& path) : state_(std::make_unique<State>()) {
  state_->path = path;
  const HANDLE original = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (original == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    state_->isFirst = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    const NativePath native(path.c_str());
    struct stat link;
    // The file that a dangling link leads to can only be created through the link. Any other file
    // that is there now is another process's, or one that a network client remembers.
    const bool isLink =
        native.valid() && lstat(native.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
    if (state_->isFirst && native.valid() && !isLink) {
      state_->originalPath = native.c_str();
      state_->openDirectory();
    }
    return;
  }
  state_->original = takeDescriptor(original);
  char real[PATH_MAX];
  if (fstat(state_->original.get(), &state_->originalStatus) != 0 ||
      realpath(NativePath(path.c_str()).c_str(), real) == nullptr) {
    state_->original = Descriptor();
    return;
  }
  state_->originalPath = real;
  state_->openDirectory();
  // The file is locked, so only a killed process can have left its name.
  unlinkat(state_->directory.get(), versionNameFor(nameOf(real)).c_str(), 0);
}

NewVersion::~NewVersion() = default;

NewVersion::operator bool() const { return state_->isFirst || state_->original; }

bool NewVersion::canReplace() const {
  return state_->isFirst ||
         (state_->directory &&
          canBeReplaced(state_->directory.get(), nameOf(state_->originalPath.c_str()),
                        state_->original.get()));
}

std::string NewVersion::create() {
  if (state_->directory) {
    state_->version.emplace(Place{.directory = state_->directory.get(),
                                  .name = nameOf(state_->originalPath.c_str()),
                                  .status = state_->originalStatus,
                                  .held = state_->isFirst ? nullptr : &state_->original},
                            ReplacementFile::Named::Always);
    ReplacementFile& version = *state_->version;
    if (!version && !isRefusal(errno)) {
      failWithErrno();
      return {};
    }
    char text[PATH_MAX * 3];
    const std::string path = folderOf(state_->originalPath) + '/' + version.temporaryName();
    if (version && version.keepsAccess() && displayName(path.c_str(), text, sizeof(text)) != 0) {
      deleteAbandonedFiles(text, ".~copy*.tmp", isVersionName);
      return text;
    }
    state_->version.reset();
  }
  state_->original = Descriptor();
  return state_->path;
}

bool NewVersion::isInPlace() const { return !state_->version; }

bool NewVersion::putInPlace() {
  if (!state_->version) return true;
  if (state_->version->complete() != Replaced::Yes ||
      state_->version->putInPlace() != Replaced::Yes) {
    return failWithErrno() != FALSE;
  }
  commitNameOf(state_->originalPath.c_str());
  return true;
}

}  // namespace platform
