#pragma once
// Extraction of many entries into a directory.

#include <string>
#include <vector>

#include "archive.h"
#include "output.h"
#include "progress.h"

// Extracts entries into a directory. Of entries whose names lead to one file, such as `A` and `a`
// on some file systems, the first is extracted, and the others fail.
class BatchExtraction {
 public:
  BatchExtraction(Archive& archive, const std::string& base, ZipArchive::ExistingFiles existing,
                  bool hasPassword, Output& output)
      : archive_(archive),
        base_(base),
        existing_(existing),
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
  void finish(const std::vector<Entry>& entries, const ZipArchive::Extraction& extraction);
  void countExtracted(const Entry& entry);

  Archive& archive_;
  const std::string base_;
  const ZipArchive::ExistingFiles existing_;
  const bool hasPassword_;
  Output& output_;
  std::size_t files_ = 0;
  std::size_t kept_ = 0;
};
