#include "platform/new_version.h"

#include "platform/abandoned_files.h"
#include "platform/unique_handle.h"

namespace platform {

struct NewVersion::State {
  std::string path;
  bool isFirst = false;
  FileHandle original;
  std::string versionPath;  // empty while there is no new version
};

NewVersion::NewVersion(const std::string& path) : state_(std::make_unique<State>()) {
  state_->path = path;
  state_->original.reset(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (state_->original) return;
  const DWORD error = GetLastError();
  state_->isFirst = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

NewVersion::~NewVersion() {
  if (!state_->versionPath.empty()) DeleteFileA(state_->versionPath.c_str());
}

NewVersion::operator bool() const { return state_->isFirst || state_->original; }

bool NewVersion::canReplace() const { return true; }

std::string NewVersion::create() {
  const std::string folder = state_->path.substr(0, state_->path.find_last_of("\\/:") + 1) + '.';
  char version[MAX_PATH + 1] = {};
  if (GetTempFileNameA(folder.c_str(), kTemporaryPrefix, 0, version) == 0) {
    state_->original.reset();
    return state_->path;
  }
  state_->versionPath = version;
  deleteAbandonedTemporaryFiles(version);
  return version;
}

bool NewVersion::putInPlace() {
  if (state_->versionPath.empty()) return true;
  const char* const version = state_->versionPath.c_str();
  const FileHandle written(CreateFileA(version, GENERIC_WRITE, FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!written || FlushFileBuffers(written.get()) == FALSE) return false;
  // Windows does not rename over an open file.
  state_->original.reset();
  const DWORD replace = state_->isFirst ? 0 : MOVEFILE_REPLACE_EXISTING;
  if (MoveFileExA(version, state_->path.c_str(), replace | MOVEFILE_WRITE_THROUGH) == FALSE) {
    return false;
  }
  state_->versionPath.clear();
  return true;
}

}  // namespace platform
