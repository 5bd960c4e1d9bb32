#include "zip/insertion.h"

#include <optional>

#include "platform/new_version.h"
#include "reporting/progress_relay.h"
#include "zip/entry_names.h"
#include "zip/rewrite.h"

namespace zip {
namespace {

// Does not append to an archive that has an entry of that stored name.
//
// An append keeps the old state in a second directory past the new bytes. A file without bytes has
// no state to keep, and a part of its first archive would be no archive. So that one is written
// beside it.
bool append(const std::string& path, const std::string& stored,
            const std::function<bool(ArchiveWriter&)>& add) {
  std::optional<platform::NewVersion> version;
  if (isEmptyFile(path) && !version.emplace(path)) return false;
  ArchiveWriter writer((version ? version->create() : path).c_str(), ArchiveWriter::Mode::Append);
  return writer && !writer.has(stored) && add(writer) && writer.commit(nullptr) &&
         (!version || version->putInPlace());
}

}  // namespace

bool isEmptyFile(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  return GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) != 0 &&
         (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && data.nFileSizeLow == 0 &&
         data.nFileSizeHigh == 0;
}

bool insertEntry(const std::string& path, const std::string& name, bool overwrite,
                 const std::function<bool()>& hasSource,
                 const std::function<bool(ArchiveWriter&)>& add) {
  const std::string stored = storedName(name);
  // The replacement of an entry needs no rights but those of a reader and of a new file.
  if (overwrite) {
    Rewrite archive(path);
    if (archive.reader().locate(stored)) {
      const bool isInserted = hasSource();
      const NameSet replaced{name};
      Rewrite::Plan plan{.drops = dropping(replaced), .add = {}};
      if (isInserted) plan.add = add;
      // The old and the new entry are exchanged in one step, so that at every instant the archive
      // has one of them.
      FileSystem::Detail::ProgressRelay progress;
      return archive.run(plan, progress) && isInserted;
    }
  }
  return append(path, stored, add);
}

}  // namespace zip
