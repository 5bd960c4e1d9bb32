// unpack.

#include <filesystem/files.h>

#include <unordered_set>

#include "archive.h"
#include "batch_extraction.h"
#include "commands.h"
#include "file_tree.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"

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
      output.fail("the entry " + inQuotes(entry.name) + " occurs again: one of them is unpacked");
    } else if (!overwrite && !entry.isDirectory() && isTaken(base + entry.name)) {
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
  BatchExtraction extraction(archive, base, overwrite, hasPassword, output);
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
