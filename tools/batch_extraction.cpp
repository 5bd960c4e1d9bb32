#include "batch_extraction.h"

#include <filesystem/files.h>

#include <algorithm>

#include "extraction.h"
#include "file_tree.h"
#include "text.h"

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
  const std::vector<Begun> batch = begin(first, last);
  std::vector<std::string> names;
  for (const Begun& begun : batch) names.push_back(begun.entry->name);
  archive_.zip().extract(names, base_.c_str());
  for (const Begun& begun : batch) finish(begun);
}

std::vector<BatchExtraction::Begun> BatchExtraction::begin(const Entry* first, const Entry* last) {
  std::vector<Begun> batch;
  for (const Entry* entry = first; entry != last; ++entry) {
    const std::string target = base_ + entry->name;
    const std::optional<FileState> before = stateOf(target);
    const auto own = before ? written_.find(before->identity) : written_.end();
    if (own != written_.end()) {
      failAsTwin(*entry, own->second);
    } else if (!overwrite_ && !entry->isDirectory() && isTaken(target)) {
      output_.detail("kept " + printable(entry->name));
      ++kept_;
    } else {
      batch.push_back({entry, before});
    }
  }
  return batch;
}

void BatchExtraction::finish(const Begun& begun) {
  const Entry& entry = *begun.entry;
  const std::string target = base_ + entry.name;
  if (!isExtracted(begun, stateOf(target))) {
    output_.fail("cannot extract " + inQuotes(entry.name) + ": " +
                 extractionFailure(archive_, entry, target, hasPassword_));
    return;
  }
  if (!entry.isDirectory()) {
    const std::optional<FileState> state = stateOf(target);
    if (state && !isOwnFile(entry, *state)) return;
    ++files_;
  }
  output_.detail("extracted " + printable(entry.name));
}

bool BatchExtraction::isExtracted(const Begun& begun, const std::optional<FileState>& after) {
  const Entry& entry = *begun.entry;
  if (leavesDirectory(entry.name)) return false;
  // The library creates the directories of an entry even if the name then is that
  // of a directory and no file can be created.
  if (entry.isDirectory()) return FileSystem::FolderExists((base_ + entry.name).c_str()) != 0;
  if (!after) return false;
  if (!begun.before || after->writeTime != begun.before->writeTime) return true;
  return archive_.zip().extract(std::vector{entry.name}, base_.c_str()) != 0;
}

// Records the file of the entry. If it is that of an earlier entry, that one is extracted again,
// the entry fails, and the result is false.
bool BatchExtraction::isOwnFile(const Entry& entry, const FileState& state) {
  const auto [own, isNew] = written_.emplace(state.identity, entry.name);
  if (isNew) return true;
  const std::string first = own->second;
  archive_.zip().extract(std::vector{first}, base_.c_str());
  if (const auto restored = stateOf(base_ + first)) written_.emplace(restored->identity, first);
  failAsTwin(entry, first);
  return false;
}

void BatchExtraction::failAsTwin(const Entry& entry, const std::string& other) {
  output_.fail("cannot extract " + inQuotes(entry.name) + ": its file is that of " +
               inQuotes(other));
}
