// File searches. A search reads one open directory, and the status of each entry that it returns.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/listing/directory_stream.h"
#include "platform/linux/listing/found_entry.h"
#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/names/wildcard.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

// Fills the record of a search for names from the listing of the directory. Returns false if the
// listing does not hold the type, or if the entry is a link.
bool describeListed(const dirent& entry, std::string_view shown, WIN32_FIND_DATAA& data) {
  if (entry.d_type != DT_REG && entry.d_type != DT_DIR) return false;
  data = WIN32_FIND_DATAA{};
  data.dwFileAttributes =
      entry.d_type == DT_DIR ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  data.cFileName[shown.copy(data.cFileName, shown.size())] = '\0';
  return true;
}

// Fills the record of an entry of an open directory; that of a link describes its target. Returns
// false if the entry does not exist any more, or if its name is too long.
bool describe(int folder, const char* path, const char* name, WIN32_FIND_DATAA& data) {
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  struct statx status;
  if (statx(folder, path, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, kWanted, &status) != 0) {
    return false;
  }
  const bool isLink = S_ISLNK(status.stx_mode);
  struct statx target;
  if (isLink && statx(folder, path, AT_STATX_DONT_SYNC, kWanted, &target) == 0) status = target;
  fillData(data, status, attributesOf(name, status.stx_mode, isLink));
  data.dwReserved0 = 0;
  data.dwReserved1 = 0;
  data.cAlternateFileName[0] = '\0';
  return displayName(name, data.cFileName, sizeof(data.cFileName)) != 0;
}

class Search {
 public:
  Search(DirectoryStream folder, std::string_view pattern, bool foldersOnly, bool namesOnly)
      : folder_(std::move(folder)),
        pattern_(pattern),
        foldersOnly_(foldersOnly),
        namesOnly_(namesOnly) {}
  // A search that has returned its only entry.
  Search() = default;

  bool next(WIN32_FIND_DATAA& data) {
    while (folder_ != nullptr) {
      errno = 0;
      entry_ = readdir(folder_.get());
      if (entry_ == nullptr) {
        error_ = errno == 0 ? ERROR_NO_MORE_FILES : errorFromErrno(errno);
        break;
      }
      if (mayMatch() && fill(data)) return true;
    }
    return false;
  }

  // The error after next() has returned false.
  DWORD error() const { return error_; }

  int folder() const { return dirfd(folder_.get()); }
  // The entry that was returned last; null if there is none any more, or if the
  // search was for a single name without an open folder.
  const dirent* entry() const { return entry_; }
  const std::vector<std::string>& passedOver() const { return passedOver_; }

 private:
  // Rules out entries by their listed type, which spares their status.
  bool mayMatch() const {
    return !foldersOnly_ || entry_->d_type == DT_DIR || entry_->d_type == DT_LNK ||
           entry_->d_type == DT_UNKNOWN;
  }

  // Fills the record of the current entry. Returns false if it is not one that the search returns.
  bool fill(WIN32_FIND_DATAA& data) {
    char buffer[MAX_PATH * 3];
    const std::string_view shown(buffer, displayName(entry_->d_name, buffer, sizeof(buffer)));
    if (shown.empty() || !pattern_->matches(shown)) return false;
    if (shown.size() >= sizeof(data.cFileName)) {
      passedOver_.emplace_back(shown);
      return false;
    }
    if (namesOnly_ && describeListed(*entry_, shown, data)) return true;
    if (describe(dirfd(folder_.get()), entry_->d_name, entry_->d_name, data)) {
      return !foldersOnly_ || (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    }
    // In a directory that may be read but not searched, the listing is all there is.
    return errno == EACCES && describeListed(*entry_, shown, data);
  }

  DirectoryStream folder_;
  const dirent* entry_ = nullptr;
  std::vector<std::string> passedOver_;
  DWORD error_ = ERROR_NO_MORE_FILES;
  std::optional<Wildcard> pattern_;
  bool foldersOnly_ = false;
  bool namesOnly_ = false;
};

// Returns the error of a search in a directory for no name at all.
DWORD errorOfUnnamed(const NativePath& directory) {
  struct stat status;
  if (stat(directory.c_str(), &status) != 0) return ERROR_PATH_NOT_FOUND;
  return S_ISDIR(status.st_mode) ? ERROR_FILE_NOT_FOUND : ERROR_DIRECTORY;
}

HANDLE findOne(const char* text, WIN32_FIND_DATAA& data) {
  const NativePath path(text);
  if (!path.valid()) return invalidHandle(path.error());
  if (path.isRoot() || path.hadTrailingSeparator()) return invalidHandle(errorOfUnnamed(path));
  const char* const name = nameOf(path.c_str());
  if (!describe(AT_FDCWD, path.c_str(), name, data)) return invalidHandle(errorOnPath(path, errno));
  return std::make_unique<Search>().release();
}

// Returns the start of the pattern in a search text: the text after the last separator, or the
// drive.
std::size_t patternStart(std::string_view text) {
  const std::size_t separator = text.find_last_of("\\/");
  if (separator != std::string_view::npos) return separator + 1;
  return text.size() > 1 && text[1] == ':' ? 2 : 0;
}

// Returns the directory of a search text, as a path that names it.
std::string directoryOf(std::string_view text, std::size_t start) {
  std::string folder(text.substr(0, start));
  const bool isOpen = folder.empty() || folder.back() == ':';
  return isOpen ? folder + "." : folder;
}

}  // namespace

FoundEntry lastFound(HANDLE handle) {
  const auto& search = *static_cast<const Search*>(handle);
  const dirent* const entry = search.entry();
  if (entry == nullptr) return {};
  return {.folder = search.folder(), .name = entry->d_name, .isRegular = entry->d_type == DT_REG};
}

bool isLastFoundLink(HANDLE handle) {
  const auto& search = *static_cast<const Search*>(handle);
  const dirent* const entry = search.entry();
  if (entry == nullptr || entry->d_type != DT_UNKNOWN) {
    return entry != nullptr && entry->d_type == DT_LNK;
  }
  struct stat status;
  return fstatat(search.folder(), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISLNK(status.st_mode);
}

const std::vector<std::string>& namesPassedOver(HANDLE handle) {
  return static_cast<const Search*>(handle)->passedOver();
}

}  // namespace platform::native

using namespace platform::native;

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* data) {
  return FindFirstFileExA(pattern, FindExInfoStandard, data, FindExSearchNameMatch, nullptr, 0);
}

HANDLE FindFirstFileExA(const char* pattern, FINDEX_INFO_LEVELS, void* data,
                        FINDEX_SEARCH_OPS operation, void*, DWORD flags) {
  if (pattern == nullptr || *pattern == '\0') return invalidHandle(ERROR_PATH_NOT_FOUND);
  auto& found = *static_cast<WIN32_FIND_DATAA*>(data);
  const std::string_view text(pattern);
  const std::size_t start = patternStart(text);
  const std::string_view names = text.substr(start);
  if (!hasWildcards(names)) return findOne(pattern, found);

  const NativePath path(directoryOf(text, start).c_str());
  if (!path.valid()) return invalidHandle(path.error());
  DirectoryStream folder = openDirectory(path.c_str());
  if (folder == nullptr) {
    return invalidHandle(errno == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(errno));
  }
  auto search = std::make_unique<Search>(std::move(folder), names,
                                         operation == FindExSearchLimitToDirectories,
                                         (flags & FIND_NAMES_ONLY) != 0);
  if (!search->next(found)) {
    const bool isEmpty = search->error() == ERROR_NO_MORE_FILES;
    return invalidHandle(isEmpty ? ERROR_FILE_NOT_FOUND : search->error());
  }
  return search.release();
}

BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data) {
  if (search == INVALID_HANDLE_VALUE || search == nullptr) return fail(ERROR_INVALID_HANDLE);
  auto& opened = *static_cast<Search*>(search);
  return opened.next(*data) ? TRUE : fail(opened.error());
}

BOOL FindClose(HANDLE search) {
  if (search == INVALID_HANDLE_VALUE || search == nullptr) return fail(ERROR_INVALID_HANDLE);
  const std::unique_ptr<Search> owner(static_cast<Search*>(search));
  return TRUE;
}
