#include "batch_extraction.h"

#include <filesystem/files.h>

#include "extraction.h"
#include "text.h"

using Result = ZipArchive::Extraction::Result;

void BatchExtraction::run(const std::vector<Entry>& entries, Progress& progress) {
  std::vector<std::string> names;
  for (const Entry& entry : entries) names.push_back(entry.name);
  std::size_t done = 0;
  const auto report = [&](const ZipArchive::Extraction& extraction) {
    finish(entries, extraction);
    progress.advance(entries[extraction.index].record.size);
    ++done;
    return true;
  };
  archive_.zip().extractEach(names, base_.c_str(), existing_, report);
  if (done < entries.size()) throw Failure("cannot read " + inQuotes(archive_.path()));
}

void BatchExtraction::finish(const std::vector<Entry>& entries,
                             const ZipArchive::Extraction& extraction) {
  const Entry& entry = entries[extraction.index];
  const std::string target = base_ + entry.name;
  // The library extracts files only, but creates the directories on the way to the name.
  const bool isExtracted = entry.isDirectory() ? extraction.result != Result::Escapes &&
                                                     FileSystem::FolderExists(target.c_str()) != 0
                                               : extraction.result == Result::Extracted;
  if (isExtracted) return countExtracted(entry);
  if (extraction.result == Result::Kept) {
    output_.detail("kept " + printable(entry.name));
    ++kept_;
    return;
  }
  const std::string reason =
      extraction.result == Result::SameFile
          ? "its file is that of " + inQuotes(entries[extraction.earlier].name)
          : extractionFailure(extraction.result, entry, target, hasPassword_);
  output_.fail("cannot extract " + inQuotes(entry.name) + ": " + reason);
}

void BatchExtraction::countExtracted(const Entry& entry) {
  if (!entry.isDirectory()) ++files_;
  output_.detail("extracted " + printable(entry.name));
}
