#include "platform/new_version.h"

#include <optional>

#include "platform/unique_handle.h"
#include "platform/windows/replacement_file.h"

namespace platform {

struct NewVersion::State {
  std::string path;
  FileHandle original;  // none for a first version
  bool isFirst = false;
  std::optional<OriginalFile> kept;
  std::optional<ReplacementFile> version;  // none if the file is written in place
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
  state_->path = pathWithoutLink(path, state_->original.get());
  state_->kept.emplace(state_->original.get());
  if (!*state_->kept) state_->original.reset();
}

NewVersion::~NewVersion() = default;

NewVersion::operator bool() const { return state_->isFirst || state_->original; }

bool NewVersion::canReplace() const { return true; }

std::string NewVersion::create() {
  state_->version.emplace(state_->path, state_->isFirst ? nullptr : &*state_->kept);
  if (*state_->version) return state_->version->close() ? state_->version->name() : "";
  const DWORD error = GetLastError();
  state_->version.reset();
  if (!isRefusal(error)) return {};
  state_->original.reset();
  return state_->path;
}

bool NewVersion::isInPlace() const { return !state_->version; }

bool NewVersion::putInPlace() {
  if (!state_->version) return true;
  if (!state_->version->complete()) return false;
  // Windows does not rename over an open file.
  state_->original.reset();
  return state_->version->putInPlace(!state_->isFirst);
}

}  // namespace platform
