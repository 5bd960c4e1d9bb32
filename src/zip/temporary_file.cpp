#include "zip/temporary_file.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/unique_handle.h"

namespace zip {
namespace {

constexpr char kPrefix[] = "~za";

// True for the names that GetTempFileNameA makes: the prefix, hexadecimal digits and ".TMP".
bool isTemporaryName(std::string_view name) {
  constexpr std::size_t kPrefixLength = sizeof kPrefix - 1;
  constexpr std::size_t kExtensionLength = 4;
  constexpr std::size_t kMostDigits = 4;
  constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
  if (name.size() <= kPrefixLength + kExtensionLength) return false;
  const std::size_t count = name.size() - kPrefixLength - kExtensionLength;
  return count <= kMostDigits &&
         name.find_first_not_of(kDigits, kPrefixLength) == kPrefixLength + count;
}

std::uint64_t ticksOf(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// Deletes temporary files of killed processes: those that were last written a day before `newest`,
// a file that was just created, and that no process holds.
void deleteAbandonedFiles(const std::string& folder, const char* newest) {
  constexpr std::uint64_t kDay = std::uint64_t{24} * 60 * 60 * 10'000'000;
  WIN32_FILE_ATTRIBUTE_DATA created = {};
  if (GetFileAttributesExA(newest, GetFileExInfoStandard, &created) == 0) return;
  WIN32_FIND_DATAA found = {};
  const platform::SearchHandle search(FindFirstFileA((folder + kPrefix + "*.TMP").c_str(), &found));
  if (!search) return;
  do {
    const bool isOld = ticksOf(found.ftLastWriteTime) + kDay < ticksOf(created.ftLastWriteTime);
    // DeleteFileA refuses a file that is held, and a folder.
    if (isOld && isTemporaryName(found.cFileName)) {
      DeleteFileA((folder + found.cFileName).c_str());
    }
  } while (FindNextFileA(search.get(), &found) != 0);
}

}  // namespace

TemporaryFile::TemporaryFile() {
  char folder[MAX_PATH + 1] = {};
  if (GetTempPathA(sizeof folder, folder) == 0 ||
      GetTempFileNameA(folder, kPrefix, 0, path_) == 0) {
    path_[0] = '\0';
    return;
  }
  deleteAbandonedFiles(folder, path_);
}

TemporaryFile::~TemporaryFile() {
  if (*this) DeleteFileA(path_);
}

}  // namespace zip
