// remove.

#include <filesystem/archive_change.h>

#include "archive_reading.h"
#include "changes.h"
#include "commands.h"
#include "progress.h"
#include "text.h"

namespace {

// The archive is closed again, so that it can be changed.
std::vector<FileSystem::Entry> selectFrom(const std::string& zip,
                                          const std::vector<std::string>& patterns) {
  const FileSystem::Archive archive = openArchive(zip);
  return selectEntries(archive.entries(), patterns, zip);
}

}  // namespace

void remove(const std::string& zip, const std::vector<std::string>& patterns, Output& output) {
  const std::vector<FileSystem::Entry> selected = selectFrom(zip, patterns);
  FileSystem::ArchiveChange change;
  for (const FileSystem::Entry& entry : selected) change.remove(entry.name);
  FileSystem::Report report;
  {
    Progress progress(output, "removing from " + zip);
    report = change.apply(zip.c_str(), FileSystem::Options().setProgress(progress.callback()));
  }
  if (!report) throwFailure(report, zip);
  for (const FileSystem::Entry& entry : selected) {
    output.detail("removed " + printable(entry.name));
  }
}
