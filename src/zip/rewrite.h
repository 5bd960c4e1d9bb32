#pragma once
// Rewriting an archive without some of its entries.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/unique_handle.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_names.h"

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

  // True if the archive has an entry of each of these names, which end at their first zero byte.
  bool hasAll(const std::vector<std::string>& names);

  enum class Result {
    Replaced,     // the archive has all entries but the dropped ones
    NothingLeft,  // no entry would remain; the archive is unchanged
    Failed,       // the archive is unchanged
  };
  // Replaces the archive by a copy without the entries of `dropped`, in the same order. `add` may
  // be empty; if not, it appends an entry to the copy, and its failure is that of the rewrite.
  //
  // If a copy cannot have the owner and the rights of the archive, the entries are taken out of its
  // directory instead, and what `add` writes is appended. Their bytes remain in the file unless all
  // entries are dropped.
  Result run(const NameSet& dropped, const std::function<bool(ArchiveWriter&)>& add = {});

 private:
  void open();
  Result runInPlace(const NameSet& dropped, const std::function<bool(ArchiveWriter&)>& add);
  Result changeInPlace(const NameSet& dropped, const std::function<bool(ArchiveWriter&)>& add);

  std::string path_;
  platform::FileHandle original_;
  std::optional<ArchiveReader> reader_;
};

}  // namespace zip
