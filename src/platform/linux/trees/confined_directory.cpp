#include "platform/confined_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/existing_file.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/trees/confined_files.h"
#include "platform/linux/trees/created_directories.h"
#include "platform/relative_path.h"
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
  bool remembersCreated = false;
  native::CreatedDirectories created;

  int deepest() const { return levels.empty() ? root.get() : levels.back().directory.get(); }
  bool descend(std::string_view path, const NewMetadata& metadata = {});
  const char* descendTo(const native::NativePath& path);
  // Finds the existing file or link that may be replaced. Nothing if it may be.
  std::optional<Result> checkExisting(const char* name, Existing existing, WrittenFiles::Name id,
                                      struct stat& status) const;
  void addWritten(const char* name, WrittenFiles::Name id);
  Result writeExisting(const char* name, const Fill& fill, Existing existing, WrittenFiles::Name id,
                       const NewMetadata& metadata);
};

}  // namespace platform

namespace platform::native {
namespace {

ConfinedDirectory::Result failedWith(DWORD error) {
  fail(error);
  return {ConfinedDirectory::Outcome::Failed};
}

ConfinedDirectory::Result failedWithErrno() {
  failWithErrno();
  return {ConfinedDirectory::Outcome::Failed};
}

// Opens a directory in the open directory `parent`, creating it with the mode if it is missing.
Descriptor openOrCreateDirectory(int parent, const char* name, mode_t mode, bool& isCreated) {
  for (int attempt = 1;; ++attempt) {
    Descriptor directory(::openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory || errno != ENOENT || attempt == kOpenAttempts) return directory;
    isCreated = mkdirat(parent, name, mode) == 0;
    if (!isCreated && errno != EEXIST) return directory;
  }
}

}  // namespace
}  // namespace platform::native

namespace platform {

using namespace platform::native;

// Opens the directories of `path`, a native path without doubled separators. The metadata is that of
// the last one, if it is created.
bool ConfinedDirectory::State::descend(std::string_view path, const NewMetadata& metadata) {
  std::size_t depth = 0;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    if (name == ".") continue;
    if (depth == levels.size() || levels[depth].name != name) {
      levels.resize(depth);
      Level level{.name = std::string(name), .directory = {}};
      bool isCreated = false;
      const mode_t mode = modeWhileFilled(path.empty() ? metadata : NewMetadata());
      level.directory = openOrCreateDirectory(deepest(), level.name.c_str(), mode, isCreated);
      if (!level.directory) return failWithErrno() != FALSE;
      if (isCreated && remembersCreated && !created.add(level.directory.get())) {
        return failWithErrno() != FALSE;
      }
      levels.push_back(std::move(level));
    }
    ++depth;
  }
  levels.resize(depth);
  return true;
}

std::optional<ConfinedDirectory::Result> ConfinedDirectory::State::checkExisting(
    const char* name, Existing existing, WrittenFiles::Name id, struct stat& status) const {
  if (fstatat(deepest(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return failedWithErrno();
  const WrittenFiles::Name former = written.nameOf(identityOf(status));
  // A file with several hard links may have both names.
  if (former != WrittenFiles::kNone && former != id && status.st_nlink == 1) {
    fail(ERROR_FILE_EXISTS);
    return Result{Outcome::SameFile, former};
  }
  if (existing == Existing::Kept) {
    fail(ERROR_FILE_EXISTS);
    return Result{S_ISDIR(status.st_mode) ? Outcome::Failed : Outcome::Kept};
  }
  return std::nullopt;
}

void ConfinedDirectory::State::addWritten(const char* name, WrittenFiles::Name id) {
  struct stat status;
  if (fstatat(deepest(), name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    written.add(identityOf(status), id);
  }
}

// Writes to a name that is in use.
ConfinedDirectory::Result ConfinedDirectory::State::writeExisting(const char* name,
                                                                  const Fill& fill,
                                                                  Existing existing,
                                                                  WrittenFiles::Name id,
                                                                  const NewMetadata& metadata) {
  struct stat status;
  if (const auto result = checkExisting(name, existing, id, status)) return *result;
  if (!replaceExisting(deepest(), name, status, fill, metadata)) return {Outcome::Failed};
  addWritten(name, id);
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

bool ConfinedDirectory::rememberCreated(bool isNew) {
  state_->remembersCreated = true;
  return !isNew || state_->created.add(state_->root.get()) || failWithErrno() != FALSE;
}

bool ConfinedDirectory::createDirectory(std::string_view name, const NewMetadata& metadata,
                                        std::size_t id) {
  if (hasParentComponent(name)) return fail(ERROR_ACCESS_DENIED) != FALSE;
  const NativePath path((".\\" + std::string(name)).c_str());
  if (!path.valid()) return fail(path.error()) != FALSE;
  if (!state_->descend({path.c_str(), path.size()}, metadata)) return false;
  const bool hasMetadata = metadata.mode || metadata.lastWrite;
  return !hasMetadata || state_->created.choose(state_->deepest(), path.c_str(), metadata, id) ||
         failWithErrno() != FALSE;
}

void ConfinedDirectory::finishDirectories(const std::function<void(std::size_t)>& failed) {
  const auto open = [&](const std::string& path) {
    if (!state_->descend(path)) return Descriptor();
    Descriptor directory(openRetrying(state_->deepest(), ".", O_RDONLY | O_DIRECTORY));
    if (!directory) failWithErrno();
    return directory;
  };
  state_->created.finish(open, failed);
}

// Opens the directory of a file. Returns the start of the file's name in the path, null with the
// error on failure.
const char* ConfinedDirectory::State::descendTo(const NativePath& path) {
  if (!path.valid()) {
    fail(path.error());
    return nullptr;
  }
  const std::string_view whole(path.c_str(), path.size());
  const std::size_t fileStart = path.hadTrailingSeparator() ? whole.size() : whole.rfind('/') + 1;
  if (!descend(whole.substr(0, fileStart))) return nullptr;
  if (fileStart < whole.size()) return path.c_str() + fileStart;
  fail(ERROR_PATH_NOT_FOUND);
  return nullptr;
}

ConfinedDirectory::Result ConfinedDirectory::write(std::string_view name, const Fill& fill,
                                                   Existing existing, WrittenFiles::Name id,
                                                   const NewMetadata& metadata) {
  // NativePath would resolve "..", as text.
  if (hasParentComponent(name)) return failedWith(ERROR_ACCESS_DENIED);
  // The dot keeps the start of the name from being taken for a drive or a share.
  const NativePath path((".\\" + std::string(name)).c_str());
  const char* const file = state_->descendTo(path);
  if (file == nullptr) return {Outcome::Failed};
  struct stat status;
  if (writeNew(state_->deepest(), file, fill, metadata, status)) {
    state_->written.add(identityOf(status), id);
    return {Outcome::Written};
  }
  if (errno != EEXIST) return failedWithErrno();
  return state_->writeExisting(file, fill, existing, id, metadata);
}

ConfinedDirectory::Result ConfinedDirectory::writeLink(std::string_view name,
                                                       const ReadTarget& read, Existing existing,
                                                       WrittenFiles::Name id,
                                                       const NewMetadata& metadata) {
  if (hasParentComponent(name)) return failedWith(ERROR_ACCESS_DENIED);
  const NativePath path((".\\" + std::string(name)).c_str());
  const char* const file = state_->descendTo(path);
  if (file == nullptr) return {Outcome::Failed};
  struct stat status;
  const bool isTaken = fstatat(state_->deepest(), file, &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (isTaken) {
    if (const auto result = state_->checkExisting(file, existing, id, status)) return *result;
  }
  NewLink link{.target = {}, .metadata = metadata};
  if (!read(link.target)) return failedWith(ERROR_GEN_FAILURE);
  if (!createLink(state_->deepest(), file, link)) {
    // A file system without links.
    if (errno == EPERM || errno == EOPNOTSUPP) return failedWith(ERROR_NOT_SUPPORTED);
    if (errno != EEXIST) return failedWithErrno();
    if (const auto result = state_->checkExisting(file, existing, id, status)) return *result;
    if (!replaceExistingByLink(state_->deepest(), file, status, link)) return {Outcome::Failed};
  }
  state_->addWritten(file, id);
  return {Outcome::Written};
}

}  // namespace platform
