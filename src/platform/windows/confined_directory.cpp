#include "platform/confined_directory.h"

#include <utility>
#include <vector>

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

// Replaces a file, or a link to one, by a new file beside it.
bool replaceExisting(const std::string& path, const ConfinedDirectory::Fill& fill) {
  // Fails if another process uses the file or if it is read-only.
  FileHandle held = openFile(path, OPEN_EXISTING);
  if (!held) return false;
  const OriginalFile original(held.get());
  if (!original) return false;
  // What a link has is not what its target has.
  ReplacementFile replacement(path, original.isLink() ? nullptr : &original);
  if (!replacement || !fill(replacement.handle()) || !replacement.complete()) return false;
  // Windows does not rename over an open file.
  held.reset();
  return replacement.putInPlace(true);
}

// Deletes the file again if it could not be written completely. A server may report that only when
// the file is closed.
bool writeNew(FileHandle file, const std::string& path, const ConfinedDirectory::Fill& fill) {
  const bool filled = fill(file.get());
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
  std::vector<Level> levels;

  const std::string& deepest() const { return levels.empty() ? root : levels.back().path; }
  bool descend(std::string_view path);
};

// Opens, and creates where missing, the directories of `path`, which ends in a separator or is
// empty.
bool ConfinedDirectory::State::descend(std::string_view path) {
  std::size_t depth = 0;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find_first_of("\\/"));
    path.remove_prefix(name.size() + 1);
    if (name.empty() || name == ".") continue;
    if (name == "..") return false;
    if (depth == levels.size() || levels[depth].name != name) {
      levels.resize(depth);
      Level level{
          .name = std::string(name), .path = deepest() + std::string(name), .directory = {}};
      CreateDirectoryA(level.path.c_str(), nullptr);
      level.directory = openDirectory(level.path, true);
      if (!level.directory) return false;
      level.path += '\\';
      levels.push_back(std::move(level));
    }
    ++depth;
  }
  levels.resize(depth);
  return true;
}

ConfinedDirectory::ConfinedDirectory(const std::string& path) : state_(std::make_unique<State>()) {
  state_->root = path;
  // With the dot an empty text and a bare drive are directories too.
  state_->rootDirectory = openDirectory(path + '.', false);
}

ConfinedDirectory::~ConfinedDirectory() = default;

ConfinedDirectory::operator bool() const { return static_cast<bool>(state_->rootDirectory); }

bool ConfinedDirectory::write(std::string_view name, const Fill& fill) {
  const std::size_t fileStart = name.find_last_of("\\/") + 1;
  if (!state_->descend(name.substr(0, fileStart)) || fileStart == name.size()) return false;
  const std::string path = state_->deepest() + std::string(name.substr(fileStart));
  FileHandle file = openFile(path, CREATE_NEW);
  if (file) return writeNew(std::move(file), path, fill);
  return GetLastError() == ERROR_FILE_EXISTS && replaceExisting(path, fill);
}

}  // namespace platform
