#include "zip/list_insertion.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "path/zero_terminated.h"
#include "zip/archive_reader.h"
#include "zip/entry_names.h"
#include "zip/insertion.h"
#include "zip/rewrite.h"

namespace zip {
namespace {

std::string nameOf(const FileList::value_type& file) {
  const std::string_view name = FileSystem::Detail::upToZero(file.second);
  return std::string(name.empty() ? FileSystem::Detail::upToZero(file.first) : name);
}

// Returns the name with `\` as its only separator. Programs take both separators for one.
std::string withBackslashes(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

// Finds the entries of an archive that have a name, whatever their separators.
class EntryNames {
 public:
  explicit EntryNames(ArchiveReader& archive) : archive_(archive) {}

  // Adds the names of those entries to `found`. Returns whether there are some.
  bool find(const std::string& name, NameSet& found) {
    const std::string key = withBackslashes(name);
    if (key.find('\\') == std::string::npos) {
      if (!archive_.locate(storedName(name))) return false;
      found.insert(name);
      return true;
    }
    if (!isRead_) read();
    const auto [first, last] = names_.equal_range(key);
    for (auto i = first; i != last; ++i) found.insert(i->second);
    return first != last;
  }

 private:
  // Reads the names that have a separator.
  void read() {
    isRead_ = true;
    archive_.forEachEntry([&] {
      const EntryInfo info = archive_.describe();
      const std::string name = callerName(info.name);
      std::string key = withBackslashes(name);
      if (!info.nameIsCut && key.find('\\') != std::string::npos) {
        names_.emplace(std::move(key), name);
      }
      return true;
    });
  }

  ArchiveReader& archive_;
  bool isRead_ = false;
  std::unordered_multimap<std::string, std::string> names_;  // by withBackslashes()
};

// The files of a list before the first one whose name rules it out.
struct Insertable {
  std::size_t count = 0;  // from the start of the list
  NameSet replaced;       // names of theirs that the archive has
};

// Considers the first `count` files.
Insertable insertableFiles(ArchiveReader& archive, const FileList& files, std::size_t count,
                           bool overwrite) {
  Insertable result;
  EntryNames entries(archive);
  std::unordered_set<std::string> names;
  for (; result.count < count; ++result.count) {
    const std::string name = nameOf(files[result.count]);
    NameSet existing;
    if (!names.insert(withBackslashes(name)).second) break;
    if (entries.find(name, existing) && !overwrite) break;
    result.replaced.merge(existing);
  }
  return result;
}

// Adds the first `count` files up to one that fails. Returns the number of those added.
std::size_t addFiles(ArchiveWriter& writer, const FileList& files, std::size_t count,
                     const Encryption& encryption) {
  std::size_t added = 0;
  for (; added < count; ++added) {
    const std::string& name = nameOf(files[added]);
    writer.useSlashes(name.find('\\') != std::string::npos);
    if (addFile(writer, files[added].first.c_str(), storedName(name), "", encryption) !=
        AddResult::Added) {
      break;
    }
  }
  return added;
}

// Appends the first `count` files to an archive that has `before` entries.
std::size_t appendFiles(const std::string& path, std::uint32_t before, const FileList& files,
                        std::size_t count, const Encryption& encryption) {
  std::size_t added = 0;
  const auto add = [&](ArchiveWriter& writer) {
    added = addFiles(writer, files, count, encryption);
    return added != 0;
  };
  if (append(path, add) == ArchiveWriter::Commit::Complete) return added;
  // The disk may have had space for some of them.
  const std::uint32_t after = ArchiveReader(path.c_str()).entryCount();
  return std::max(after, before) - before;
}

// Replaces entries. The copy of the archive lacks the entries of all files, so if one fails, it is
// made again for the files before that one.
std::size_t replace(Rewrite& archive, const FileList& files, Insertable insertable,
                    const Encryption& encryption) {
  while (insertable.count != 0) {
    std::size_t added = 0;
    const auto add = [&](ArchiveWriter& writer) {
      added = addFiles(writer, files, insertable.count, encryption);
      return added == insertable.count;
    };
    if (archive.run(insertable.replaced, add) == Rewrite::Result::Replaced) return added;
    if (added == insertable.count) return 0;
    insertable = insertableFiles(archive.reader(), files, added, true);
  }
  return 0;
}

}  // namespace

std::size_t insertFiles(const std::string& path, const FileList& files, bool overwrite,
                        const Encryption& encryption) {
  std::optional<Rewrite> archive(std::in_place, path);
  if (!canAppend(archive->reader(), path)) return 0;
  const Insertable insertable = insertableFiles(archive->reader(), files, files.size(), overwrite);
  if (!insertable.replaced.empty()) return replace(*archive, files, insertable, encryption);
  const std::uint32_t before = archive->reader().entryCount();
  // Closed, so that the writer can open it.
  archive.reset();
  return insertable.count == 0 ? 0 : appendFiles(path, before, files, insertable.count, encryption);
}

}  // namespace zip
