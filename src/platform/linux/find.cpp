// Searches: one open folder, one status for each name that is delivered.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/attributes.h"
#include "platform/linux/directory_stream.h"
#include "platform/linux/found_entry.h"
#include "platform/linux/last_error.h"
#include "platform/linux/native_path.h"
#include "platform/linux/wildcard.h"

namespace platform::native {
namespace {

constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;

// Gives the record its name. False if it is too long.
bool setName(std::string_view shown, WIN32_FIND_DATAA& data) {
  if (shown.size() >= sizeof(data.cFileName)) return false;
  data.cFileName[shown.copy(data.cFileName, shown.size())] = '\0';
  return true;
}

// Fills what a search for names tells, from the folder's own listing. False if
// that does not tell what the name leads to.
bool listName(const dirent& entry, std::string_view shown, WIN32_FIND_DATAA& data) {
  if (entry.d_type != DT_REG && entry.d_type != DT_DIR) return false;
  data = WIN32_FIND_DATAA{};
  data.dwFileAttributes =
      entry.d_type == DT_DIR ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  return setName(shown, data);
}

// Fills the record of a name in an open folder; a link counts as what it leads
// to. False if the name is gone, or is too long once it is delivered.
bool describe(int folder, const char* path, const char* name, WIN32_FIND_DATAA& data) {
  struct statx status;
  if (statx(folder, path, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, kWanted, &status) != 0) {
    return false;
  }
  const bool isLink = S_ISLNK(status.stx_mode);
  struct statx behind;
  if (isLink && statx(folder, path, AT_STATX_DONT_SYNC, kWanted, &behind) == 0) status = behind;
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
  // A search that has delivered all it has.
  Search() = default;

  bool next(WIN32_FIND_DATAA& data) {
    while (folder_ != nullptr) {
      const dirent* const entry = entry_ = readdir(folder_.get());
      if (entry == nullptr) break;
      if (foldersOnly_ && entry->d_type != DT_DIR && entry->d_type != DT_LNK &&
          entry->d_type != DT_UNKNOWN) {
        continue;
      }
      char buffer[MAX_PATH * 3];
      const std::string_view shown(buffer, displayName(entry->d_name, buffer, sizeof(buffer)));
      if (shown.empty() || !pattern_->matches(shown)) continue;
      if (namesOnly_ && listName(*entry, shown, data)) return true;
      if (!describe(dirfd(folder_.get()), entry->d_name, entry->d_name, data)) continue;
      if (foldersOnly_ && (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) continue;
      return true;
    }
    return false;
  }

  int folder() const { return dirfd(folder_.get()); }
  // The entry that was returned last; null if there is none any more, or if the
  // search was for a single name without an open folder.
  const dirent* entry() const { return entry_; }

 private:
  DirectoryStream folder_;
  const dirent* entry_ = nullptr;
  std::optional<Wildcard> pattern_;
  bool foldersOnly_ = false;
  bool namesOnly_ = false;
};

HANDLE findOne(const char* text, WIN32_FIND_DATAA& data) {
  const NativePath path(text);
  if (!path.valid()) return invalidHandle(path.error());
  const char* const name = nameOf(path.c_str());
  if (path.isRoot() || path.hadTrailingSeparator()) {
    struct stat status;
    const bool exists = stat(path.c_str(), &status) == 0;
    return invalidHandle(exists ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
  }
  if (!describe(AT_FDCWD, path.c_str(), name, data)) return invalidHandle(errorOnPath(path, errno));
  return std::make_unique<Search>().release();
}

// The folder part of a search text, as a text that names the folder.
std::string folderOf(std::string_view text, std::size_t patternStart) {
  std::string folder(text.substr(0, patternStart));
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
  const std::size_t separator = text.find_last_of("\\/:");
  const std::size_t start = separator == std::string_view::npos ? 0 : separator + 1;
  const std::string_view names = text.substr(start);
  if (!hasWildcards(names)) return findOne(pattern, found);

  const NativePath path(folderOf(text, start).c_str());
  if (!path.valid()) return invalidHandle(path.error());
  DirectoryStream folder(opendir(path.c_str()));
  if (folder == nullptr) {
    return invalidHandle(errno == ENOENT ? ERROR_PATH_NOT_FOUND : errorFromErrno(errno));
  }
  auto search = std::make_unique<Search>(std::move(folder), names,
                                         operation == FindExSearchLimitToDirectories,
                                         (flags & FIND_NAMES_ONLY) != 0);
  if (!search->next(found)) return invalidHandle(ERROR_FILE_NOT_FOUND);
  return search.release();
}

BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data) {
  if (search == INVALID_HANDLE_VALUE || search == nullptr) return fail(ERROR_INVALID_HANDLE);
  return static_cast<Search*>(search)->next(*data) ? TRUE : fail(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE search) {
  if (search == INVALID_HANDLE_VALUE || search == nullptr) return fail(ERROR_INVALID_HANDLE);
  const std::unique_ptr<Search> owner(static_cast<Search*>(search));
  return TRUE;
}
