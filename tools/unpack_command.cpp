// unpack.

#include <filesystem/files.h>

#include "archive.h"
#include "batch_extraction.h"
#include "commands.h"
#include "file_tree.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"

namespace {

// True if the entry needs neither be read nor have a password. Whether a file is kept is decided
// when it would be created.
bool isKeptAlready(const Entry& entry, const std::string& target) {
  return !entry.isDirectory() && isTaken(target) && FileSystem::FolderExists(target.c_str()) == 0;
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
  std::uint64_t bytes = 0;
  std::size_t kept = 0;
  std::vector<Entry> all = archive.entries();
  const std::vector<bool> isLast = lastOfNames(all);
  for (std::size_t i = 0; i < all.size(); ++i) {
    Entry& entry = all[i];
    if (!isLast[i]) {
      output.fail("the entry " + inQuotes(entry.name) + " occurs again: the last is unpacked");
    } else if (!overwrite && isKeptAlready(entry, base + entry.name)) {
      output.detail("kept " + printable(entry.name));
      ++kept;
    } else {
      if (entry.record.isLink) {
        output.warn("the symbolic link " + inQuotes(entry.name) +
                    " is unpacked as a file that holds its target");
      }
      bytes += entry.record.size;
      entries.push_back(std::move(entry));
    }
  }
  const std::string text = passwordFor(entries, password, output);
  archive.zip().password(text.c_str());
  const bool hasPassword = !text.empty();
  using Existing = ZipArchive::ExistingFiles;
  BatchExtraction extraction(archive, base, overwrite ? Existing::Replace : Existing::Keep,
                             hasPassword, output);
  {
    Progress progress(output, "unpacking " + zip, bytes);
    extraction.run(entries, progress);
  }
  kept += extraction.kept();
  const std::string existing =
      kept == 0 ? "" : ", kept " + counted(kept, "existing file", "existing files");
  output.summary("unpacked " + counted(extraction.files(), "file", "files") + " into " +
                 printable(directory) + existing);
}
