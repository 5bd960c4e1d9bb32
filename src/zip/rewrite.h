#pragma once
// Rewriting an archive without some of its entries.

#include <filesystem/results.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/unique_handle.h"
#include "reporting/progress_relay.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_names.h"
#include "zip/temporary_file.h"

namespace zip {

// An archive that is read and then replaced by a copy of itself. The engine cannot take an entry
// out of an archive, so the entries that stay are copied to a temporary file, as they are stored.
class Rewrite {
 public:
  // Opens the archive. Until the object is destroyed no other process can open it without sharing,
  // and so none can append an entry that the copy lacks.
  explicit Rewrite(const std::string& path);

  // The archive. No reader if it cannot be opened.
  ArchiveReader& reader() { return *reader_; }
  // Returns the name of the reader's current entry, as callers know it and whole.
  std::string nameOf(const EntryInfo& entry) const;

  struct Plan {
    // True for the names, as callers know them, of the entries that are left out.
    std::function<bool(const std::string& name)> drops;
    // Appends entries to the copy. May be empty; false is the failure of the rewrite.
    std::function<bool(ArchiveWriter&)> add;
    // Whether the archive may end up without entries.
    bool mayBeEmpty = false;
  };
  // Replaces the archive by a copy that the plan describes, with the entries that stay in the same
  // order. The progress is that of the stored bytes that are copied. On failure, and if the plan's
  // archive would be empty and may not be, the archive is unchanged.
  //
  // If a copy cannot have the owner and the rights of the archive, the entries are taken out of its
  // directory instead, and what `add` writes is appended. Their bytes remain in the file unless all
  // entries are dropped.
  bool run(const Plan& plan, FileSystem::Detail::ProgressRelay& progress);

  // Why the archive could not be opened, or run() has failed. It is Reason::None if `add` has
  // failed, or the archive would be empty.
  FileSystem::Reason reason() const { return reason_; }
  // The name of the entry that could not be copied, if that is why.
  const std::string& failedEntry() const { return failedEntry_; }

 private:
  void open();
  bool fail(FileSystem::Reason reason);
  bool failWithError();
  bool copyEntries(ArchiveWriter& writer, const Plan& plan,
                   FileSystem::Detail::ProgressRelay& progress);
  bool putInPlace(const TemporaryFile& copy, FileSystem::Detail::ProgressRelay& progress);
  bool runInPlace(const Plan& plan);
  bool changeInPlace(const Plan& plan);

  std::string path_;
  platform::FileHandle original_;
  std::optional<ArchiveReader> reader_;
  bool keepsAny_ = false;
  FileSystem::Reason reason_ = FileSystem::Reason::None;
  std::string failedEntry_;
};

// Leaves out the entries of these names, which outlive the result.
std::function<bool(const std::string&)> dropping(const NameSet& names);

}  // namespace zip
