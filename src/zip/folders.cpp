// FRT_ZIP_FOLDER, packFolder and FRT_UNZIP_FILE.

#include <filesystem/archive_change.h>
#include <filesystem/enumeration.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "path/with_backslash.h"
#include "reporting/progress_relay.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_adder.h"
#include "zip/entry_names.h"
#include "zip/extraction.h"
#include "zip/new_archive.h"
#include "zip/packing.h"

namespace {

using FileSystem::ExistingFiles;
using FileSystem::ItemResult;
using FileSystem::Options;
using FileSystem::Reason;
using FileSystem::Report;
using FileSystem::Detail::ProgressRelay;

// Returns a number other than 0 that is equal for entries of equal names, whatever their
// separators. These replace each other.
std::uint64_t idOf(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return std::hash<std::string>()(name) | 1;
}

// Adds files, named by their paths below the directory, whose path ends in a separator, up to one
// that fails. `name` receives the name of the last one that was tried.
Reason addFiles(zip::EntryAdder& adder, const std::string& directory,
                const std::vector<std::string>& files, ProgressRelay& progress, std::string& name) {
  for (const std::string& file : files) {
    name = FileSystem::subPath(directory, file);
    if (!progress.begin(name)) return Reason::Cancelled;
    const Reason reason = adder.addFile(file.c_str(), zip::storedName(name), "");
    if (reason != Reason::None) return reason;
    if (!progress.end()) return Reason::Cancelled;
  }
  return Reason::None;
}

// Packs all files, or reports the one that fails.
Reason packAll(zip::NewArchive& archive, const std::string& directory,
               const std::vector<std::string>& files, const zip::EntrySettings& settings,
               ProgressRelay& progress, Report& report) {
  if (!archive.begin()) return archive.reason();
  archive.writer().useSlashes(true);
  zip::EntryAdder adder(archive.writer(), settings, progress);
  std::string name;
  const Reason reason = addFiles(adder, directory, files, progress, name);
  if (reason != Reason::None) {
    const bool isOfFile = reason != Reason::Cancelled && !archive.writer().isArchiveAtFault();
    if (isOfFile) report.items.push_back({name, reason, {}});
    return reason;
  }
  // Made first, so that no memory is needed when the archive is complete.
  std::vector<ItemResult> items = report.items;
  for (const std::string& file : files) {
    items.push_back({FileSystem::subPath(directory, file), Reason::None, {}});
  }
  if (!archive.complete()) return archive.reason();
  report.items = std::move(items);
  return Reason::None;
}

Report pack(const std::string& directory, const char* zip, const Options& options,
            ProgressRelay& progress) {
  Report report;
  zip::EntrySettings settings;
  report.reason = zip::readSettings(options, settings);
  if (report.reason != Reason::None) return report;
  zip::NewArchive archive(zip);
  if (!archive) {
    report.reason = archive.reason();
    return report;
  }
  const zip::PackableFiles files = zip::packableFiles(directory, zip, progress, report);
  progress.expect(files.paths.size(), files.bytes);
  if (report.reason == Reason::None) {
    report.reason = packAll(archive, directory, files.paths, settings, progress, report);
  }
  return report;
}

}  // namespace

// An existing archive keeps its content until the new one is complete. It is locked before the
// files are listed, so that an archive that lies in the folder is not packed into the new one.
bool FRT_ZIP_FOLDER(const char* folder, const char* zip) {
  zip::NewArchive archive(zip);
  if (!archive) return false;
  const std::string directory = FileSystem::Detail::withBackslash(folder);
  std::vector<std::string> files;
  FileSystem::EnumFilesWithPath(files, directory.c_str(), "*.*", true);

  if (!archive.begin()) return false;
  ProgressRelay progress;
  zip::EntryAdder adder(archive.writer(), {}, progress);
  std::string name;
  const Reason reason = addFiles(adder, directory, files, progress, name);
  // An archive that lacks the last files replaces the old one too, but not a part of one.
  return !archive.writer().isArchiveAtFault() && archive.complete() && reason == Reason::None;
}

Report FileSystem::packFolder(const char* folder, const char* zip, const Options& options) {
  ProgressRelay progress(options.progress());
  Report report = pack(Detail::withBackslash(folder), zip, options, progress);
  progress.rethrow();
  return report;
}

bool FRT_UNZIP_FILE(const char* zip, const char* folder) {
  const std::string base = FileSystem::Detail::withBackslash(folder);
  {
    ZipArchive archive;
    if (archive.open(zip, GENERIC_READ) == 0) return false;
  }
  zip::ArchiveReader reader(zip);
  std::vector<std::string> names;
  reader.names(names);
  FileSystem::Detail::ProgressRelay progress;
  zip::Extractor extractor(reader, nullptr, progress);
  for (const std::string& stored : names) {
    const std::string target = base + zip::callerName(stored);
    if (!reader.locate(stored) ||
        extractor.toFileBelow(target, base.size(), ExistingFiles::Replace, idOf(stored)).reason !=
            Reason::None) {
      return false;
    }
  }
  return true;
}
