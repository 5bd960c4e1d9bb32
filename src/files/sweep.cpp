// Deletion of old files from a tree.

#include <filesystem/files.h>

#include <string>
#include <string_view>

#include "files/attributes.h"
#include "files/file_time.h"
#include "files/tree_deletion.h"
#include "path/fixed_text.h"
#include "path/with_backslash.h"
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
  if (name.empty() || entry.pathSize + name.size() >= Detail::kPathBuffer) return false;
  return !entry.isAtTop || isTemporaryName(name);
}

}  // namespace

unsigned int eraseOldFile(const std::string& folder, unsigned int days) {
  const double limit = now() - static_cast<double>(days);
  const std::string start = Detail::withBackslash(folder);
  const Detail::TreeDeletion deleted = Detail::deleteFromTree(
      start, platform::OpenDirectory::LastLink::Followed, [&](const Detail::TreeEntry& entry) {
        if (!isCandidate(entry)) return false;
        FILETIME time{};
        return entry.directory.lastWrite(time) && limit >= Detail::dateOf(time) &&
               entry.directory.canOpen();
      });
  // A link is not an empty directory, even if its target is one.
  if (deleted.topShrank && !Detail::isLink(start.c_str())) DeleteEmptyFolder(start.c_str());
  return deleted.files;
}

}  // namespace FileSystem
