#pragma once
// A new archive, which takes the place of an existing one when it is complete.

#include <filesystem/results.h>

#include <optional>
#include <string>

#include "platform/new_version.h"
#include "zip/archive_writer.h"

namespace zip {

// The existing file keeps its content until complete(), and is locked. Where a new file cannot have
// its owner and rights, the file is kept: the entries that it has are taken out of its directory,
// and the new ones are appended, and moved over the bytes of the old ones if they fit there.
class NewArchive {
 public:
  enum class Existing {
    Replace,
    Refuse,  // unless it has no bytes
  };

  // Locks the file at `path`, if there is one.
  explicit NewArchive(const std::string& path, Existing existing = Existing::Replace);
  NewArchive(const NewArchive&) = delete;
  NewArchive& operator=(const NewArchive&) = delete;
  // Without complete() before, the old archive remains.
  ~NewArchive();

  // False if the file cannot be replaced.
  explicit operator bool() const { return version_ && *version_; }

  // Begins the new archive, without entries. False on failure.
  bool begin();
  // The new archive. Called after begin().
  ArchiveWriter& writer() { return *writer_; }
  // Commits the archive with the entries that were written. False, with the old archive in place,
  // if the disk has no space for all of them.
  bool complete();

  // Why the file cannot be replaced, or begin() or complete() has failed. It is Reason::Exists if a
  // file with bytes is refused.
  FileSystem::Reason reason() const { return reason_; }

 private:
  bool beginInPlace();
  bool failWithError();

  const std::string path_;
  const Existing existing_;
  std::optional<platform::NewVersion> version_;  // none while the file is changed in place
  std::optional<ArchiveWriter> writer_;
  FileSystem::Reason reason_ = FileSystem::Reason::None;
};

}  // namespace zip
