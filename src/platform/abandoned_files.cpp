#include "platform/abandoned_files.h"

#include <atomic>
#include <cstdint>
#include <functional>

#include "platform/unique_handle.h"

namespace platform {
namespace {

// True for the names that GetTempFileNameA makes: the prefix, hexadecimal digits and ".TMP".
bool isTemporaryName(std::string_view name) {
  constexpr std::size_t kPrefixLength = sizeof kTemporaryPrefix - 1;
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

// Reports whether this is the first call for the files within the hour. Listing a directory of many
// files takes longer than creating one more in it.
bool isDue(const std::string& files, std::uint64_t now) {
  constexpr std::uint64_t kHour = std::uint64_t{60} * 60 * 10'000'000;
  constexpr std::size_t kSlots = 16;
  static std::atomic<std::uint64_t> latest[kSlots];
  const std::size_t hash = std::hash<std::string>{}(files);
  const std::uint64_t mark = hash + now / kHour;
  return latest[hash % kSlots].exchange(mark) != mark;
}

}  // namespace

void deleteAbandonedFiles(const std::string& newest, const char* pattern,
                          bool (*isTemporary)(std::string_view name)) {
  constexpr std::uint64_t kDay = std::uint64_t{24} * 60 * 60 * 10'000'000;
  WIN32_FILE_ATTRIBUTE_DATA created = {};
  if (GetFileAttributesExA(newest.c_str(), GetFileExInfoStandard, &created) == 0) return;
  const std::string folder = newest.substr(0, newest.find_last_of("\\/:") + 1);
  const std::uint64_t now = ticksOf(created.ftLastWriteTime);
  if (!isDue(folder + pattern, now)) return;
  WIN32_FIND_DATAA found = {};
  const SearchHandle search(FindFirstFileA((folder + pattern).c_str(), &found));
  if (!search) return;
  do {
    const bool isOld = ticksOf(found.ftLastWriteTime) + kDay < now;
    // DeleteFileA refuses a file that is held, and a folder.
    if (isOld && isTemporary(found.cFileName)) DeleteFileA((folder + found.cFileName).c_str());
  } while (FindNextFileA(search.get(), &found) != 0);
}

void deleteAbandonedTemporaryFiles(const std::string& newest) {
  const std::string pattern = std::string(kTemporaryPrefix) + "*.TMP";
  deleteAbandonedFiles(newest, pattern.c_str(), isTemporaryName);
}

}  // namespace platform
