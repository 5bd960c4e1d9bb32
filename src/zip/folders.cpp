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
#include "zip/host_workers.h"
#include "zip/new_archive.h"
#include "zip/packing.h"
#include "zip/prepared_entries.h"

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

// Adds files by `add(index)`, up to one that fails. They are named by their paths below the
// directory, whose path ends in a separator. `name` receives the name of the last one that was tried.
Reason addFiles(const std::function<Reason(std::size_t)>& add, const std::string& directory,
                const std::vector<std::string>& files, ProgressRelay& progress, std::string& name) {
  for (std::size_t i = 0; i < files.size(); ++i) {
    name = FileSystem::subPath(directory, files[i]);
    if (!progress.begin(name)) return Reason::Cancelled;
    const Reason reason = add(i);
    if (reason != Reason::None) return reason;
    if (!progress.end()) return Reason::Cancelled;
  }
  return Reason::None;
}

// Adds folders in the same way.
Reason addFolders(zip::EntryAdder& adder, const std::string& directory,
                  const std::vector<std::string>& folders, ProgressRelay& progress,
                  std::string& name) {
  for (const std::string& folder : folders) {
    name = folder.substr(directory.size());
    if (!progress.begin(name)) return Reason::Cancelled;
    const std::string stored = zip::storedPath(name.empty() ? ".\\" : name);
    const Reason reason = adder.addFolder(folder.c_str(), stored);
    if (reason != Reason::None) return reason;
    if (!progress.end()) return Reason::Cancelled;
  }
  return Reason::None;
}

// Adds links in the same way.
Reason addLinks(zip::EntryAdder& adder, const std::string& directory,
                const std::vector<std::string>& links, ProgressRelay& progress, std::string& name) {
  for (const std::string& link : links) {
    name = FileSystem::subPath(directory, link);
    if (!progress.begin(name)) return Reason::Cancelled;
    const Reason reason = adder.addLink(link.c_str(), zip::storedPath(name));
    if (reason != Reason::None) return reason;
    if (!progress.end()) return Reason::Cancelled;
  }
  return Reason::None;
}

// Appends the items of what was packed.
void appendItems(const zip::PackableFiles& files, const std::string& directory,
                 std::vector<ItemResult>& items) {
  for (const std::string& folder : files.folders) {
    items.push_back({folder.substr(directory.size()), Reason::None, {}, true});
  }
  for (const auto* const paths : {&files.paths, &files.links}) {
    for (const std::string& path : *paths) {
      items.push_back({FileSystem::subPath(directory, path), Reason::None, {}});
    }
  }
}

// Packs all, or reports the file that fails.
Reason packAll(zip::NewArchive& archive, const std::string& directory,
               const zip::PackableFiles& files, const zip::EntrySettings& settings,
               zip::HostWorkers& workers, ProgressRelay& progress, Report& report) {
  if (!archive.begin()) return archive.reason();
  archive.writer().useSlashes(true);
  archive.writer().useWorkers(workers);
  zip::EntryAdder adder(archive.writer(), settings, progress);
  const auto prepare = [&](std::size_t index, zip::ArchiveWriter& writer, zip::EntryAdder& own) {
    const std::string& path = files.paths[index];
    writer.useSlashes(true);
    return own.addFile(path.c_str(), zip::storedPath(FileSystem::subPath(directory, path)), "");
  };
  zip::PreparedEntries prepared(files.paths.size(), settings, workers, prepare);
  std::string name;
  const auto addFile = [&](std::size_t index) {
    const auto entry = prepared.take(index);
    return entry ? adder.addPrepared(*entry)
                 : adder.addFile(files.paths[index].c_str(), zip::storedPath(name), "");
  };
  // Folders first: unzip gives permissions and times to those folders alone that it has not created
  // for a file before.
  Reason reason = addFolders(adder, directory, files.folders, progress, name);
  if (reason == Reason::None) reason = addFiles(addFile, directory, files.paths, progress, name);
  if (reason == Reason::None) reason = addLinks(adder, directory, files.links, progress, name);
  if (reason != Reason::None) {
    const bool isOfFile = reason != Reason::Cancelled && !archive.writer().isArchiveAtFault();
    if (isOfFile) report.items.push_back({name, reason, {}});
    return reason;
  }
  // Made first, so that no memory is needed when the archive is complete.
  std::vector<ItemResult> items = report.items;
  appendItems(files, directory, items);
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
  const zip::PackableFiles files = zip::packableFiles(directory, zip, options, progress, report);
  progress.expect(files.size(), files.bytes);
  if (report.reason == Reason::None) {
    zip::HostWorkers workers(options, progress);
    report.reason = packAll(archive, directory, files, settings, workers, progress, report);
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
  const auto addFile = [&](std::size_t index) {
    return adder.addFile(files[index].c_str(), zip::storedName(name), "");
  };
  const Reason reason = addFiles(addFile, directory, files, progress, name);
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
