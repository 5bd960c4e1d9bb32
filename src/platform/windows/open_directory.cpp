// A directory that is open without FILE_SHARE_DELETE can be neither renamed nor deleted, and nor
// can a directory above it. While a walk holds every directory it is in, their paths therefore stay
// valid.

#include "platform/open_directory.h"

#include <string_view>

#include "platform/probe_open.h"
#include "platform/unique_handle.h"

namespace platform {
namespace {

bool isPlainDirectory(DWORD attributes) {
  constexpr DWORD kKind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return (attributes & kKind) == FILE_ATTRIBUTE_DIRECTORY;
}

}  // namespace

struct OpenDirectory::State {
  std::string pathOf(const std::string& name) const { return path + name; }

  void hold(const std::string& directory, LastLink link) {
    const DWORD flags = link == LastLink::Refused ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
    held.reset(CreateFileA(directory.c_str(), FILE_LIST_DIRECTORY,
                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                           FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
    BY_HANDLE_FILE_INFORMATION information;
    if (held && (!GetFileInformationByHandle(held.get(), &information) ||
                 !isPlainDirectory(information.dwFileAttributes))) {
      held.reset();
      SetLastError(ERROR_DIRECTORY);
    }
  }

  std::string path;  // ends in a separator
  FileHandle held;
  bool isNew = false;
  SearchHandle search;
  bool started = false;
  DWORD error = ERROR_SUCCESS;  // of the end of the listing
  WIN32_FIND_DATAA entry{};
};

// A system call takes a whole path.
OpenDirectory::OpenDirectory(const std::string& path, LastLink link, const OpenDirectory*)
    : state_(std::make_unique<State>()) {
  state_->path = path;
  if (!path.ends_with('\\') && !path.ends_with('/')) state_->path += '\\';
  state_->hold(path, link);
}

OpenDirectory::OpenDirectory(OpenDirectory& parent, const std::string& storedName)
    : state_(std::make_unique<State>()) {
  if (!parent) {
    SetLastError(ERROR_INVALID_HANDLE);
    return;
  }
  const std::string path = parent.state_->pathOf(storedName);
  state_->path = path + '\\';
  state_->hold(path, LastLink::Refused);
}

OpenDirectory OpenDirectory::make(const std::string& path, const OpenDirectory*) {
  const std::string name = path.substr(0, path.find_last_not_of("\\/") + 1);
  const bool isNew = CreateDirectoryA(name.c_str(), nullptr) != FALSE;
  const DWORD error = isNew ? ERROR_SUCCESS : GetLastError();
  OpenDirectory made(path, isNew ? LastLink::Refused : LastLink::Followed);
  made.state_->isNew = isNew && made;
  const DWORD openError = GetLastError();
  const DWORD attributes = GetFileAttributesA(name.c_str());
  const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
  if (made.isNew() && isThere && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetFileAttributesA(name.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  }
  const bool isDirectory = isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const bool isMissing = !isNew && error != ERROR_ALREADY_EXISTS && !isDirectory;
  SetLastError(isMissing ? error : openError);
  return made;
}

OpenDirectory::OpenDirectory(OpenDirectory&&) noexcept = default;

OpenDirectory::~OpenDirectory() = default;

OpenDirectory::operator bool() const { return static_cast<bool>(state_->held); }

bool OpenDirectory::isNew() const { return state_->isNew; }

bool OpenDirectory::identity(FileIdentity& identity) const {
  BY_HANDLE_FILE_INFORMATION information;
  if (!*this || GetFileInformationByHandle(state_->held.get(), &information) == FALSE) return false;
  identity = {.volume = information.dwVolumeSerialNumber,
              .index = std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
  return true;
}

bool OpenDirectory::next() {
  if (!*this) return false;
  for (;;) {
    if (!state_->started) {
      state_->started = true;
      state_->search.reset(FindFirstFileExA(state_->pathOf("*").c_str(), FindExInfoBasic,
                                            &state_->entry, FindExSearchNameMatch, nullptr,
                                            FIND_FIRST_EX_LARGE_FETCH));
      if (!state_->search) {
        state_->error = GetLastError();
        return false;
      }
    } else if (!state_->search || !FindNextFileA(state_->search.get(), &state_->entry)) {
      if (state_->search) state_->error = GetLastError();
      state_->search.reset();
      return false;
    }
    const std::string_view name = state_->entry.cFileName;
    if (name != "." && name != "..") return true;
  }
}

bool OpenDirectory::isComplete() const {
  return state_->error == ERROR_NO_MORE_FILES || state_->error == ERROR_FILE_NOT_FOUND;
}

const char* OpenDirectory::name() const { return state_->entry.cFileName; }

std::string OpenDirectory::storedName() const { return state_->entry.cFileName; }

bool OpenDirectory::isDirectory() const { return isPlainDirectory(state_->entry.dwFileAttributes); }

bool OpenDirectory::leadsToDirectory() const {
  constexpr DWORD kKind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return (state_->entry.dwFileAttributes & kKind) == kKind;
}

bool OpenDirectory::isRegular() const {
  constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return (state_->entry.dwFileAttributes & kOther) == 0;
}

bool OpenDirectory::canOpen() const {
  return probeOpen(state_->pathOf(state_->entry.cFileName).c_str(), GENERIC_READ,
                   FILE_SHARE_READ | FILE_SHARE_WRITE);
}

bool OpenDirectory::lastWrite(FILETIME& time) const {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExA(state_->pathOf(state_->entry.cFileName).c_str(), GetFileExInfoStandard,
                            &data)) {
    return false;
  }
  time = data.ftLastWriteTime;
  return true;
}

bool OpenDirectory::deleteEntry() {
  const std::string path = state_->pathOf(state_->entry.cFileName);
  const bool isDirectoryLink = (state_->entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return (isDirectoryLink ? RemoveDirectoryA(path.c_str()) : DeleteFileA(path.c_str())) != FALSE;
}

bool OpenDirectory::deleteIfOpenable() { return canOpen() && deleteEntry(); }

bool OpenDirectory::canDelete() const {
  if ((state_->entry.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
    SetLastError(ERROR_ACCESS_DENIED);
    return false;
  }
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  constexpr DWORD kItself = FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS;
  const std::string path = state_->pathOf(state_->entry.cFileName);
  const FileHandle file(
      CreateFileA(path.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING, kItself, nullptr));
  return static_cast<bool>(file);
}

bool OpenDirectory::copyNew(const OpenDirectory& source, const std::string& storedName,
                            WrittenFiles&, WrittenFiles::Name, const CopyProgress& progress) {
  return copyFile(source.state_->pathOf(storedName).c_str(), state_->pathOf(storedName).c_str(),
                  true, progress);
}

OpenDirectory::Named OpenDirectory::find(const std::string& storedName) const {
  return {.exists =
              GetFileAttributesA(state_->pathOf(storedName).c_str()) != INVALID_FILE_ATTRIBUTES};
}

void OpenDirectory::addWritten(const std::string&, WrittenFiles&, WrittenFiles::Name) const {}

bool OpenDirectory::removeDirectory(const std::string& storedName) {
  const std::string path = state_->pathOf(storedName);
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && isPlainDirectory(attributes) &&
         RemoveDirectoryA(path.c_str()) != FALSE;
}

}  // namespace platform
