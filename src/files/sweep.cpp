// Listing and deletion of the old files of a tree.

#include <filesystem/files.h>

#include <string>
#include <string_view>
#include <vector>

#include "files/attributes.h"
#include "files/file_time.h"
#include "files/tree_deletion.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"
#include "path/zero_terminated.h"
#include "platform/win32.h"

namespace FileSystem {
namespace {

// The current time as fileTime returns times, without milliseconds.
double now() {
  SYSTEMTIME time{};
  GetLocalTime(&time);
  double date = 0.0;
  return SystemTimeToVariantTime(&time, &date) ? date : 0.0;
}

bool isTemporaryName(std::string_view name) {
  constexpr std::string_view kExtension = ".tmp";
  return name.size() >= kExtension.size() &&
         lstrcmpiA(name.data() + (name.size() - kExtension.size()), kExtension.data()) == 0;
}

// Reports whether the sweep considers the entry: the files that EnumFilesWithPath lists, directly
// in the start directory only those of the pattern `*.tmp`. It lists no path over its limit.
bool isCandidate(const Detail::TreeEntry& entry) {
  const std::string_view name = entry.directory.name();
  if (name.empty() || entry.directoryPath.size() + name.size() >= Detail::kPathBuffer) return false;
  return !entry.isAtTop || isTemporaryName(name);
}

// Reports whether the sweep tries to delete the entry if it deletes what was last written at
// `limit` or before.
bool isSwept(const Detail::TreeEntry& entry, double limit) {
  if (!isCandidate(entry)) return false;
  FILETIME time{};
  return entry.directory.lastWrite(time) && limit >= Detail::dateOf(time) &&
         entry.directory.canOpen();
}

constexpr auto kLastLink = platform::OpenDirectory::LastLink::Followed;

// Returns the start of the sweep, with a separator. An empty text stays empty and names no folder;
// with a separator it would be the root of the current drive.
std::string startOf(const std::string& folder) {
  const std::string_view text = Detail::upToZero(folder);
  return text.empty() ? std::string() : Detail::withBackslash(text);
}

}  // namespace

unsigned int listOldFiles(std::vector<std::string>& files, const std::string& folder,
                          unsigned int days) {
  const double limit = now() - static_cast<double>(days);
  const std::size_t before = files.size();
  Detail::visitTree(startOf(folder), kLastLink, [&](const Detail::TreeEntry& entry) {
    if (isSwept(entry, limit) && entry.directory.canDelete()) {
      files.push_back(entry.directoryPath + entry.directory.name());
    }
  });
  return static_cast<unsigned int>(files.size() - before);
}

unsigned int eraseOldFile(const std::string& folder, unsigned int days) {
  const double limit = now() - static_cast<double>(days);
  const std::string start = startOf(folder);
  const Detail::TreeDeletion deleted = Detail::deleteFromTree(
      start, kLastLink, [&](const Detail::TreeEntry& entry) { return isSwept(entry, limit); });
  // A link is not an empty directory, even if its target is one.
  if (deleted.topShrank && !Detail::isLink(start.c_str())) DeleteEmptyFolder(start.c_str());
  return deleted.files;
}

}  // namespace FileSystem
