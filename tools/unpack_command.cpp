// unpack.

#include <filesystem/files.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <unordered_set>

#include "archive.h"
#include "commands.h"
#include "extraction.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

// The write time of a file; nothing if it does not exist.
std::optional<fs::file_time_type> writeTime(const std::string& path) {
  std::error_code error;
  const fs::file_time_type time = fs::last_write_time(nativePath(path), error);
  return error ? std::nullopt : std::optional(time);
}

// Extracts entries into a directory.
//
// The library's extraction of a list opens the archive once, but does not report
// which of its entries failed; the extraction of a single entry reports that, but
// reads the archive's directory every time. So entries are extracted in batches,
// and the files show the outcome: an extracted file is new, or has a new write
// time. Only where the time is the same is the entry extracted once more, alone.
class Unpacking {
 public:
  Unpacking(Archive& archive, const std::string& base, bool hasPassword, Output& output)
      : archive_(archive), base_(base), hasPassword_(hasPassword), output_(output) {}

  // Extracts the entries, all of different names.
  void run(const std::vector<Entry>& entries, Progress& progress);

  std::size_t files() const { return files_; }

 private:
  void runBatch(const Entry* first, const Entry* last);
  bool isExtracted(const Entry& entry, const std::optional<fs::file_time_type>& before);

  Archive& archive_;
  const std::string base_;
  const bool hasPassword_;
  Output& output_;
  std::size_t files_ = 0;
};

void Unpacking::run(const std::vector<Entry>& entries, Progress& progress) {
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

void Unpacking::runBatch(const Entry* first, const Entry* last) {
  std::vector<std::string> names;
  std::vector<std::optional<fs::file_time_type>> before;
  for (const Entry* entry = first; entry != last; ++entry) {
    names.push_back(entry->name);
    before.push_back(writeTime(base_ + entry->name));
  }
  archive_.zip().extract(names, base_.c_str());
  for (const Entry* entry = first; entry != last; ++entry) {
    if (!isExtracted(*entry, before[static_cast<std::size_t>(entry - first)])) {
      output_.fail("cannot unpack " + inQuotes(entry->name) + ": " +
                   extractionFailure(archive_, *entry, base_ + entry->name, hasPassword_));
      continue;
    }
    if (!entry->isDirectory()) ++files_;
    output_.detail("unpacked " + printable(entry->name));
  }
}

bool Unpacking::isExtracted(const Entry& entry, const std::optional<fs::file_time_type>& before) {
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

}  // namespace

void unpack(const std::string& zip, const std::string& directory, bool overwrite,
            const PasswordSource& password, Output& output) {
  Archive archive(zip, FileSystem::kAccessRead);
  const std::string base = withBackslash(creatablePath(directory));
  if (FileSystem::EnsurePathExists(base.c_str()) == 0) {
    throw Failure("cannot create or write to the directory " + inQuotes(directory));
  }
  std::vector<Entry> entries;
  std::unordered_set<std::string> seen;
  std::uint64_t bytes = 0;
  std::size_t kept = 0;
  for (Entry& entry : archive.entries()) {
    if (!seen.insert(entry.name).second) {
      output.fail("the entry " + inQuotes(entry.name) +
                  " occurs again: only the first is unpacked");
    } else if (!overwrite && !entry.isDirectory() && writeTime(base + entry.name)) {
      output.detail("kept " + printable(entry.name));
      ++kept;
    } else {
      bytes += entry.record.size;
      entries.push_back(std::move(entry));
    }
  }
  const std::string text = passwordFor(entries, password, output);
  archive.zip().password(text.c_str());
  const bool hasPassword = !text.empty();
  Unpacking unpacking(archive, base, hasPassword, output);
  {
    Progress progress(output, "unpacking " + zip, bytes);
    unpacking.run(entries, progress);
  }
  const std::string existing =
      kept == 0 ? "" : ", kept " + counted(kept, "existing file", "existing files");
  output.summary("unpacked " + counted(unpacking.files(), "file", "files") + " into " +
                 printable(directory) + existing);
}
