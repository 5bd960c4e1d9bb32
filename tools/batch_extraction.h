#pragma once
// Extraction of many entries into a directory.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "archive.h"
#include "output.h"
#include "progress.h"

// Extracts entries into a directory.
//
// The library's extraction of a list opens the archive once, but does not report
// which of its entries failed; the extraction of a single entry reports that, but
// reads the archive's directory every time. So entries are extracted in batches,
// and the files show the outcome: an extracted file is new, or has a new write
// time. Only where the time is the same is the entry extracted once more, alone.
class BatchExtraction {
 public:
  BatchExtraction(Archive& archive, const std::string& base, bool hasPassword, Output& output)
      : archive_(archive), base_(base), hasPassword_(hasPassword), output_(output) {}

  // Extracts the entries, which differ in their names. Reports each that fails and
  // continues.
  void run(const std::vector<Entry>& entries, Progress& progress);

  // Number of files extracted so far.
  std::size_t files() const { return files_; }

 private:
  void runBatch(const Entry* first, const Entry* last);
  bool isExtracted(const Entry& entry,
                   const std::optional<std::filesystem::file_time_type>& before);

  Archive& archive_;
  const std::string base_;
  const bool hasPassword_;
  Output& output_;
  std::size_t files_ = 0;
};
