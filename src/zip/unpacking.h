#pragma once
// Unpacking entries into a folder.
//
// Entries come in any order, and may be hostile. So folders are created first, each with no more
// permissions than it is to have, then files are written, and then links, so that none is in the way
// of a file. At last the folders get their times and permissions.

#include <filesystem/archive.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "reporting/progress_relay.h"
#include "zip/archive_reader.h"
#include "zip/entry_metadata.h"
#include "zip/extraction.h"

namespace zip {

class Unpacking {
 public:
  // `base` is the path of the folder, with a separator at its end; `isNew` says that it was created
  // for the entries. The arguments outlive the object.
  Unpacking(ArchiveReader& reader, const std::vector<FileSystem::Entry>& entries,
            const std::string& base, bool isNew, const FileSystem::Options& options,
            FileSystem::Detail::ProgressRelay& progress);

  // Returns the items of the entries that the call came to, in their order, and the reason of the
  // whole call. What the host's callback throws remains in the progress.
  FileSystem::Report run();

 private:
  // Unpacks an entry.
  using Step = FileSystem::Reason (Unpacking::*)(std::size_t index);

  void runAll(const std::vector<std::size_t>& indices, Step step);
  FileSystem::Reason check(std::size_t index);
  FileSystem::Reason createFolder(std::size_t index);
  FileSystem::Reason writeFile(std::size_t index);
  FileSystem::Reason createLink(std::size_t index);
  FileSystem::Reason resultOf(const Extractor::Outcome& outcome, std::size_t index);
  std::string targetOf(std::size_t index) const;

  ArchiveReader& reader_;
  const std::vector<FileSystem::Entry>& entries_;
  const std::string& base_;
  const bool isNew_;
  const FileSystem::Options& options_;
  const KeptMetadata kept_;
  FileSystem::Detail::ProgressRelay& progress_;
  Extractor extractor_;
  std::unordered_map<std::string_view, std::size_t> last_;  // the last entry of each name
  std::vector<FileSystem::ItemResult> items_;               // of all entries
  std::vector<bool> isReached_;
};

}  // namespace zip
