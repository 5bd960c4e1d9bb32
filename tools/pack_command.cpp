// pack.

#include <filesystem/archive_change.h>
#include <filesystem/files.h>

#include "changes.h"
#include "commands.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"
#include "workers.h"

using FileSystem::ItemResult;
using FileSystem::Reason;
using FileSystem::Report;

namespace {

// Names each file that was not packed. Throws if the archive is not written.
void report(const Report& report, const std::string& zip, Output& output) {
  bool isNamed = false;
  for (const ItemResult& item : report.items) {
    if (item.reason == Reason::None) continue;
    const std::string name = item.name.empty() ? "." : nativePath(item.name);
    const char* const action = item.reason == Reason::NotAFile ? "left out " : "cannot pack ";
    output.fail(action + inQuotes(name) + ": " + FileSystem::reasonText(item.reason));
    if (item.reason != Reason::NotAFile) isNamed = true;
  }
  if (report.reason == Reason::None) return;
  if (isNamed) throw Failure("nothing was packed, and " + inQuotes(zip) + " is unchanged");
  throw Failure("cannot write " + inQuotes(zip) +
                ", which is unchanged: " + FileSystem::reasonText(report.reason));
}

}  // namespace

void pack(const std::string& directory, const std::string& zip, const EncryptionRequest& encryption,
          const CompressionRequest& compression, const KeptRequest& kept, Output& output) {
  if (FileSystem::FolderExists(directory.c_str()) == 0) {
    throw Failure("there is no directory " + inQuotes(directory));
  }
  FileSystem::Options options = optionsOf(newPassword(encryption, output), compression);
  keep(kept, options);
  Workers workers(compression.jobs);
  workers.lendTo(options);
  Report result;
  {
    Progress progress(output, "packing " + directory);
    options.setProgress(progress.callback());
    result = FileSystem::packFolder(directory.c_str(), zip.c_str(), options);
  }
  report(result, zip, output);
  std::size_t count = 0;
  for (const ItemResult& item : result.items) {
    if (item.reason != Reason::None) continue;
    if (output.verbose) output.detail("packed " + printable(item.name.empty() ? "." : item.name));
    if (!item.isFolder) ++count;
  }
  output.summary("packed " + counted(count, "file", "files") + " into " + printable(zip));
}
