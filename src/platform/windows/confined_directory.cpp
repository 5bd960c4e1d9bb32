#include "platform/confined_directory.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "platform/relative_path.h"
#include "platform/unique_handle.h"
#include "platform/windows/replacement_file.h"

namespace platform {
namespace {

constexpr DWORD kAllAccess = GENERIC_READ | GENERIC_WRITE;

// Opens a directory. While the handle is open, no other process can rename or delete the directory
// or put a link in its place. With `confined`, a link is refused.
FileHandle openDirectory(const std::string& path, bool confined) {
  const DWORD link = confined ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
  FileHandle directory(CreateFileA(path.c_str(), FILE_LIST_DIRECTORY,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                   FILE_FLAG_BACKUP_SEMANTICS | link, nullptr));
  BY_HANDLE_FILE_INFORMATION information;
  if (!directory || GetFileInformationByHandle(directory.get(), &information) == FALSE ||
      (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
      (confined && (information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)) {
    return {};
  }
  return directory;
}

FileHandle openFile(const std::string& path, DWORD disposition) {
  return FileHandle(CreateFileA(path.c_str(), kAllAccess, 0, nullptr, disposition,
                                FILE_ATTRIBUTE_ARCHIVE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

FileIdentity identityOf(const BY_HANDLE_FILE_INFORMATION& information) {
  return {.volume = information.dwVolumeSerialNumber,
          .index = std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

// Reads what a file or directory is, or a link itself. False if nothing has the path.
bool inspect(const std::string& path, BY_HANDLE_FILE_INFORMATION& information) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  // No access is asked for, so that no sharing is violated.
  const FileHandle file(CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                    nullptr));
  return file && GetFileInformationByHandle(file.get(), &information) != FALSE;
}

bool isDirectory(const BY_HANDLE_FILE_INFORMATION& information) {
  constexpr DWORD kKinds = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return (information.dwFileAttributes & kKinds) == FILE_ATTRIBUTE_DIRECTORY;
}

// Sets the time and the attributes of an open file or directory, which has `attributes`.
bool applyMetadata(HANDLE file, DWORD attributes, const NewMetadata& metadata) {
  if (metadata.attributes == 0 && !metadata.lastWrite) return true;
  FILE_BASIC_INFO information{};
  information.FileAttributes = attributes | metadata.attributes;
  if (metadata.lastWrite) {
    information.LastWriteTime.LowPart = metadata.lastWrite->dwLowDateTime;
    information.LastWriteTime.HighPart = static_cast<LONG>(metadata.lastWrite->dwHighDateTime);
  }
  return SetFileInformationByHandle(file, FileBasicInfo, &information, sizeof information) != FALSE;
}

// Replaces a file, or a link to one, by a new file beside it.
bool replaceExisting(const std::string& path, const ConfinedDirectory::Fill& fill,
                     const NewMetadata& metadata) {
  // Fails if another process uses the file or if it is read-only.
  FileHandle held = openFile(path, OPEN_EXISTING);
  if (!held) return false;
  const OriginalFile original(held.get());
  if (!original) return false;
  // What a link has is not what its target has.
  ReplacementFile replacement(path, original.isLink() ? nullptr : &original);
  replacement.setMetadata(metadata);
  if (!replacement || !fill(replacement.handle()) || !replacement.complete()) return false;
  // Windows does not rename over an open file.
  held.reset();
  return replacement.putInPlace(true);
}

// Deletes the file again if it could not be written completely. A server may report that only when
// the file is closed.
bool writeNew(FileHandle file, const std::string& path, const ConfinedDirectory::Fill& fill,
              const NewMetadata& metadata) {
  const bool filled =
      fill(file.get()) && applyMetadata(file.get(), FILE_ATTRIBUTE_ARCHIVE, metadata);
  if (closeFile(file.release()) != FALSE && filled) return true;
  DeleteFileA(path.c_str());
  return false;
}

}  // namespace

// The directories from the confined one down to that of the last file. Files of one directory
// usually follow each other, so most of them open none.
struct ConfinedDirectory::State {
  struct Level {
    std::string name;
    std::string path;  // with separator
    FileHandle directory;
  };

  std::string root;
  FileHandle rootDirectory;
  // A directory that gets metadata in the end.
  struct Chosen {
    std::string path;
    NewMetadata metadata;
    std::size_t id;
  };

  std::vector<Level> levels;
  WrittenFiles written;
  bool isCreated = false;         // the directory itself
  std::set<std::string> created;  // paths of directories in it, with separators
  std::vector<Chosen> chosen;

  const std::string& deepest() const { return levels.empty() ? root : levels.back().path; }
  bool descend(std::string_view path);
  Result writeExisting(const std::string& path, const Fill& fill, Existing existing,
                       WrittenFiles::Name id, const NewMetadata& metadata);
};

// Opens, and creates where missing, the directories of `path`, which ends in a separator or is
// empty.
bool ConfinedDirectory::State::descend(std::string_view path) {
  std::size_t depth = 0;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find_first_of("\\/"));
    path.remove_prefix(name.size() + 1);
    if (name.empty() || name == ".") continue;
    if (depth == levels.size() || levels[depth].name != name) {
      levels.resize(depth);
      Level level{
          .name = std::string(name), .path = deepest() + std::string(name), .directory = {}};
      const bool isNew = CreateDirectoryA(level.path.c_str(), nullptr) != FALSE;
      level.directory = openDirectory(level.path, true);
      if (!level.directory) return false;
      level.path += '\\';
      if (isNew) created.insert(level.path);
      levels.push_back(std::move(level));
    }
    ++depth;
  }
  levels.resize(depth);
  return true;
}

// Writes to a path that is in use.
ConfinedDirectory::Result ConfinedDirectory::State::writeExisting(const std::string& path,
                                                                  const Fill& fill,
                                                                  Existing existing,
                                                                  WrittenFiles::Name id,
                                                                  const NewMetadata& metadata) {
  BY_HANDLE_FILE_INFORMATION information;
  if (!inspect(path, information)) return {Outcome::Failed};
  const WrittenFiles::Name former = written.nameOf(identityOf(information));
  // A file with several hard links may have both names.
  if (former != WrittenFiles::kNone && former != id && information.nNumberOfLinks == 1) {
    return {Outcome::SameFile, former};
  }
  if (existing == Existing::Kept) {
    return {isDirectory(information) ? Outcome::Failed : Outcome::Kept};
  }
  if (!replaceExisting(path, fill, metadata)) return {Outcome::Failed};
  if (inspect(path, information)) written.add(identityOf(information), id);
  return {Outcome::Written};
}

ConfinedDirectory::ConfinedDirectory(const std::string& path) : state_(std::make_unique<State>()) {
  state_->root = path;
  // With the dot an empty text and a bare drive are directories too.
  state_->rootDirectory = openDirectory(path + '.', false);
}

ConfinedDirectory::~ConfinedDirectory() = default;

ConfinedDirectory::operator bool() const { return static_cast<bool>(state_->rootDirectory); }

bool ConfinedDirectory::rememberCreated(bool isNew) {
  state_->isCreated = isNew;
  return true;
}

bool ConfinedDirectory::createDirectory(std::string_view name, const NewMetadata& metadata,
                                        std::size_t id) {
  if (hasParentComponent(name) || !state_->descend(std::string(name) + '\\')) return false;
  const bool isCreated =
      state_->levels.empty() ? state_->isCreated : state_->created.count(state_->deepest()) != 0;
  if (isCreated) state_->chosen.push_back({state_->deepest(), metadata, id});
  return true;
}

// The path of a directory is longer than those of the directories above it. None of them can be
// exchanged while its handle is open, so each is opened once more with the right to change it.
void ConfinedDirectory::finishDirectories(const std::function<void(std::size_t)>& failed) {
  std::vector<State::Chosen> chosen = std::exchange(state_->chosen, {});
  std::stable_sort(chosen.begin(), chosen.end(),
                   [](const auto& a, const auto& b) { return a.path.size() > b.path.size(); });
  for (const State::Chosen& directory : chosen) {
    const std::string_view below = std::string_view(directory.path).substr(state_->root.size());
    const std::string path = directory.path + '.';
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const bool isThere = state_->descend(below);
    const FileHandle handle(isThere ? CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, kShareAll,
                                                  nullptr, OPEN_EXISTING,
                                                  FILE_FLAG_BACKUP_SEMANTICS, nullptr)
                                    : INVALID_HANDLE_VALUE);
    if (!handle || !applyMetadata(handle.get(), FILE_ATTRIBUTE_DIRECTORY, directory.metadata)) {
      failed(directory.id);
    }
  }
}

ConfinedDirectory::Result ConfinedDirectory::writeLink(std::string_view, const ReadTarget&,
                                                       Existing, WrittenFiles::Name,
                                                       const NewMetadata&) {
  SetLastError(ERROR_NOT_SUPPORTED);
  return {Outcome::Failed};
}

ConfinedDirectory::Result ConfinedDirectory::write(std::string_view name, const Fill& fill,
                                                   Existing existing, WrittenFiles::Name id,
                                                   const NewMetadata& metadata) {
  const std::size_t fileStart = name.find_last_of("\\/") + 1;
  if (hasParentComponent(name) || !state_->descend(name.substr(0, fileStart)) ||
      fileStart == name.size()) {
    return {Outcome::Failed};
  }
  const std::string path = state_->deepest() + std::string(name.substr(fileStart));
  FileHandle file = openFile(path, CREATE_NEW);
  if (!file) {
    if (GetLastError() != ERROR_FILE_EXISTS) return {Outcome::Failed};
    return state_->writeExisting(path, fill, existing, id, metadata);
  }
  BY_HANDLE_FILE_INFORMATION information;
  const bool isKnown = GetFileInformationByHandle(file.get(), &information) != FALSE;
  if (!writeNew(std::move(file), path, fill, metadata)) return {Outcome::Failed};
  if (isKnown) state_->written.add(identityOf(information), id);
  return {Outcome::Written};
}

}  // namespace platform
