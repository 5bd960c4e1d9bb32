#pragma once
// Extraction of many entries into a directory.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "archive.h"
#include "file_state.h"
#include "output.h"
#include "progress.h"

// Extracts entries into a directory.
//
// The library's extraction of a list opens the archive once, but does not report
// which of its entries failed; the extraction of a single entry reports that, but
// reads the archive's directory every time. So entries are extracted in batches,
// and the files show the outcome: an extracted file is new, or has a new write
// time. Only where the time is the same is the entry extracted once more, alone.
//
// Some file systems take two names for one, such as `A` and `a`. Of such entries the first is
// extracted, and the others fail.
class BatchExtraction {
 public:
  BatchExtraction(Archive& archive, const std::string& base, bool overwrite, bool hasPassword,
                  Output& output)
      : archive_(archive),
        base_(base),
        overwrite_(overwrite),
        hasPassword_(hasPassword),
        output_(output) {}

  // Extracts the entries, which differ in their names. Reports each that fails and
  // continues.
  void run(const std::vector<Entry>& entries, Progress& progress);

  // Number of files extracted so far.
  std::size_t files() const { return files_; }
  // Number of existing files that were kept.
  std::size_t kept() const { return kept_; }

 private:
  // An entry whose extraction begins, and the file that has its path.
  struct Begun {
    const Entry* entry;
    std::optional<FileState> before;
  };

  void runBatch(const Entry* first, const Entry* last);
  std::vector<Begun> begin(const Entry* first, const Entry* last);
  void finish(const Begun& begun);
  bool isExtracted(const Begun& begun, const std::optional<FileState>& after);
  bool isOwnFile(const Entry& entry, const FileState& state);
  void failAsTwin(const Entry& entry, const std::string& other);

  Archive& archive_;
  const std::string base_;
  const bool overwrite_;
  const bool hasPassword_;
  Output& output_;
  std::size_t files_ = 0;
  std::size_t kept_ = 0;
  // The entries of the files that were extracted.
  std::map<decltype(FileState::identity), std::string> written_;
};
