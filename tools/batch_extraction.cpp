#include "batch_extraction.h"

#include <filesystem/files.h>

#include <algorithm>

#include "extraction.h"
#include "file_tree.h"
#include "text.h"

namespace fs = std::filesystem;

void BatchExtraction::run(const std::vector<Entry>& entries, Progress& progress) {
  // Each batch costs one reading of the directory.
  constexpr std::uint64_t kBatchBytes = 32 << 20;
  const std::size_t batchEntries = std::max<std::size_t>(500, entries.size() / 50);
  for (std::size_t first = 0; first < entries.size();) {
    std::uint64_t bytes = 0;
    std::size_t last = first;
    while (last < entries.size() && last - first < batchEntries && bytes < kBatchBytes) {
      bytes += entries[last++].record.size;
    }
    runBatch(entries.data() + first, entries.data() + last);
    progress.advance(bytes);
    first = last;
  }
}

void BatchExtraction::runBatch(const Entry* first, const Entry* last) {
  std::vector<std::string> names;
  std::vector<std::optional<fs::file_time_type>> before;
  for (const Entry* entry = first; entry != last; ++entry) {
    names.push_back(entry->name);
    before.push_back(writeTime(base_ + entry->name));
  }
  archive_.zip().extract(names, base_.c_str());
  for (const Entry* entry = first; entry != last; ++entry) {
    if (!isExtracted(*entry, before[static_cast<std::size_t>(entry - first)])) {
      output_.fail("cannot extract " + inQuotes(entry->name) + ": " +
                   extractionFailure(archive_, *entry, base_ + entry->name, hasPassword_));
      continue;
    }
    if (!entry->isDirectory()) ++files_;
    output_.detail("extracted " + printable(entry->name));
  }
}

bool BatchExtraction::isExtracted(const Entry& entry,
                                  const std::optional<fs::file_time_type>& before) {
  if (leavesDirectory(entry.name)) return false;
  const std::string target = base_ + entry.name;
  // The library creates the directories of an entry even if the name then is that
  // of a directory and no file can be created.
  if (entry.isDirectory()) return FileSystem::FolderExists(target.c_str()) != 0;
  const auto after = writeTime(target);
  if (!after) return false;
  if (after != before) return true;
  return archive_.zip().extract(std::vector{entry.name}, base_.c_str()) != 0;
}
