// ZipArchive: removal.

#include "zip/rewrite.h"

#include <filesystem/zip_archive.h>

#include "platform/replace_file.h"
#include "zip/zip_archive_private.h"

namespace zip {
namespace {

// An empty file of a new name in the system's temporary folder, gone with its
// object.
class TemporaryFile {
 public:
  TemporaryFile() {
    char folder[MAX_PATH + 1] = {};
    if (GetTempPathA(sizeof folder, folder) == 0 ||
        GetTempFileNameA(folder, "~za", 0, path_) == 0) {
      path_[0] = '\0';
    }
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (*this) DeleteFileA(path_);
  }
  explicit operator bool() const { return path_[0] != '\0'; }
  const char* path() const { return path_; }

 private:
  char path_[MAX_PATH + 1] = {};
};

std::string globalComment(ZipReader* reader) {
  ZipGlobalInfo info = {};
  if (ZipReadGlobalInfo(reader, &info) != 0) return {};
  std::string comment(info.commentLength, '\0');
  ZipReadGlobalComment(reader, comment.data(), info.commentLength);
  return comment;
}

// Copies what stays; the number of entries, or -1 if one cannot be carried over.
std::int64_t copyEntries(ZipReader* reader, ZipWriter* writer, const NameSet& dropped) {
  std::int64_t kept = 0;
  for (int status = ZipFirstEntry(reader); status == 0; status = ZipNextEntry(reader)) {
    ZipEntryInfo info = {};
    char name[kLongestName + 1] = {};
    if (ZipReadEntryInfo(reader, &info, name, kLongestName, nullptr, 0, nullptr, 0) != 0) return -1;
    // A longer name was cut, and is none that could be asked for.
    if (info.nameLength <= kLongestName && dropped.count(callerName(name)) != 0) continue;
    if (ZipCopyEntry(writer, reader) != 0) return -1;
    ++kept;
  }
  return kept;
}

}  // namespace

RewriteResult rewriteArchive(const std::string& path, const NameSet& dropped,
                             const std::function<bool(ZipWriter*)>& add) {
  const TemporaryFile temporary;
  if (!temporary) return RewriteResult::Failed;
  // Kept open to the end: nobody can open the archive for himself alone and add
  // what the copy does not have, and a copy of another rewriter is noticed.
  const platform::FileHandle original(CreateFileA(path.c_str(), GENERIC_READ,
                                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  Reader reader(ZipOpenReader(path.c_str()));
  if (!original || !reader) return RewriteResult::Failed;
  Writer writer(temporary.path(), ZipModeCreate);
  if (!writer) return RewriteResult::Failed;
  const std::int64_t kept = copyEntries(reader.get(), writer.get(), dropped);
  const std::string comment = globalComment(reader.get());
  const bool added = kept >= 0 && (!add || add(writer.get()));
  if (!writer.commit(comment.c_str()) || !added) return RewriteResult::Failed;
  reader.reset();
  if (kept == 0 && !add) return RewriteResult::NothingLeft;
  return platform::replaceFile(original.get(), path.c_str(), temporary.path())
             ? RewriteResult::Replaced
             : RewriteResult::Failed;
}

}  // namespace zip

int ZipArchive::remove(const char* name) {
  if (canRead() == 0 || canWrite() == 0 || exist(name) == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  return zip::rewriteArchive(m_private->file.name, {name}) == zip::RewriteResult::Replaced ? 1 : 0;
}
