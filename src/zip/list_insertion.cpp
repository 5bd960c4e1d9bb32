#include "zip/list_insertion.h"

#include <optional>
#include <unordered_map>

#include "zip/archive_reader.h"
#include "zip/entry_names.h"
#include "zip/insertion.h"
#include "zip/rewrite.h"

namespace zip {
namespace {

const std::string& nameOf(const FileList::value_type& file) {
  return file.second.empty() ? file.first : file.second;
}

// The first files of a list, of which the last one of each name is added.
class Selection {
 public:
  Selection(const FileList& files, std::size_t count) : files_(files), count_(count) {
    for (std::size_t i = 0; i < count; ++i) last_[nameOf(files[i])] = i;
  }

  // Adds the files up to the first one that fails, and returns their number.
  std::size_t addTo(ArchiveWriter& writer, const Encryption& encryption) const {
    std::size_t done = 0;
    while (done < count_ && (!isLast(done) || add(writer, done, encryption))) ++done;
    return done;
  }

  // Returns the number of files that end with the one that was added as the `added`th.
  std::size_t countWith(std::size_t added) const {
    std::size_t done = 0;
    for (; done < count_ && (added > 0 || !isLast(done)); ++done) {
      if (isLast(done)) --added;
    }
    return done;
  }

 private:
  bool isLast(std::size_t i) const { return last_.at(nameOf(files_[i])) == i; }
  bool add(ArchiveWriter& writer, std::size_t i, const Encryption& encryption) const {
    return addFile(writer, files_[i].first.c_str(), storedName(nameOf(files_[i])), "", encryption);
  }

  const FileList& files_;
  std::size_t count_;
  std::unordered_map<std::string, std::size_t> last_;
};

// Appends all files to the archive.
std::size_t append(const std::string& path, const FileList& files, std::size_t count,
                   const Encryption& encryption) {
  const std::uint32_t before = ArchiveReader(path.c_str()).entryCount();
  ArchiveWriter writer(path.c_str(), ArchiveWriter::Mode::Append);
  if (!writer) return 0;
  const Selection selection(files, count);
  const std::size_t added = selection.addTo(writer, encryption);
  switch (writer.commit(nullptr)) {
    case ArchiveWriter::Commit::Complete:
      return added;
    case ArchiveWriter::Commit::Partial:
      return selection.countWith(ArchiveReader(path.c_str()).entryCount() - before);
    case ArchiveWriter::Commit::Failed:
      break;
  }
  return 0;
}

// Replaces entries. The copy lacks the entries of all names of the selection, so if a file fails,
// it is made again for the files before that one.
std::size_t replace(Rewrite& archive, const FileList& files, const Encryption& encryption) {
  for (std::size_t count = files.size(); count > 0;) {
    NameSet dropped;
    for (std::size_t i = 0; i < count; ++i) {
      if (archive.reader().locate(storedName(nameOf(files[i])))) dropped.insert(nameOf(files[i]));
    }
    std::size_t added = 0;
    const auto add = [&](ArchiveWriter& writer) {
      added = Selection(files, count).addTo(writer, encryption);
      return added == count;
    };
    if (archive.run(dropped, add) == Rewrite::Result::Replaced) return count;
    if (added == count) return 0;
    count = added;
  }
  return 0;
}

// Returns the index of the first file whose name the archive has, the number of files if there is
// none.
std::size_t firstExisting(ArchiveReader& archive, const FileList& files) {
  std::size_t i = 0;
  while (i < files.size() && !archive.locate(storedName(nameOf(files[i])))) ++i;
  return i;
}

}  // namespace

std::size_t insertFiles(const std::string& path, const FileList& files, bool overwrite,
                        const Encryption& encryption) {
  std::size_t count = 0;
  {
    Rewrite archive(path);
    if (!canAppend(archive.reader(), path)) return 0;
    count = firstExisting(archive.reader(), files);
    if (overwrite && count < files.size()) return replace(archive, files, encryption);
  }
  return count == 0 ? 0 : append(path, files, count, encryption);
}

}  // namespace zip
