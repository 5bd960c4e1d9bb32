// FRT_ZIP_FOLDER, packFolder and FRT_UNZIP_FILE.

#include <filesystem/enumeration.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "path/with_backslash.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_names.h"
#include "zip/extraction.h"
#include "zip/insertion.h"
#include "zip/new_archive.h"
#include "zip/packing.h"

namespace {

using FileSystem::ExistingFiles;
using FileSystem::PackReport;
using FileSystem::Reason;
using zip::AddResult;
using zip::ArchiveWriter;

// The files of a directory that are packed, whose path ends in a separator.
struct Source {
  std::string directory;
  std::vector<std::string> files;
};

// Adds files, named by their paths below the directory, up to one that fails. Returns the result
// for the last file that was tried, and sets `count` to the number of those added.
AddResult addFiles(ArchiveWriter& writer, const Source& source, const zip::Encryption& encryption,
                   std::size_t& count) {
  AddResult result = AddResult::Added;
  for (count = 0; count < source.files.size(); ++count) {
    const std::string& file = source.files[count];
    const std::string name = zip::storedName(FileSystem::subPath(source.directory, file));
    result = zip::addFile(writer, file.c_str(), name, "", encryption);
    if (result != AddResult::Added) break;
  }
  return result;
}

PackReport::Reason reasonOf(AddResult result) {
  using Reason = PackReport::Reason;
  switch (result) {
    case AddResult::Unreadable:
      return Reason::Unreadable;
    case AddResult::TooLarge:
      return Reason::TooLarge;
    case AddResult::NameTooLong:
      return Reason::NameTooLong;
    default:
      return Reason::NotWritten;
  }
}

// Returns a number other than 0 that is equal for entries of equal names, whatever their
// separators. These replace each other.
std::uint64_t idOf(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return std::hash<std::string>()(name) | 1;
}

// Packs all files, or reports the one that fails.
bool packAll(zip::NewArchive& archive, const Source& source, const zip::Encryption& encryption,
             PackReport::File& failed) {
  if (!archive.begin()) return false;
  archive.writer().useSlashes(true);
  std::size_t count = 0;
  const AddResult result = addFiles(archive.writer(), source, encryption, count);
  if (result == AddResult::Added) return archive.complete();
  if (result != AddResult::NotWritten) failed = {source.files[count], reasonOf(result)};
  return false;
}

}  // namespace

// An existing archive keeps its content until the new one is complete. It is locked before the
// files are listed, so that an archive that lies in the folder is not packed into the new one.
bool FRT_ZIP_FOLDER(const char* folder, const char* zip) {
  zip::NewArchive archive(zip);
  if (!archive) return false;
  Source source{FileSystem::Detail::withBackslash(folder), {}};
  FileSystem::EnumFilesWithPath(source.files, source.directory.c_str(), "*.*", true);

  if (!archive.begin()) return false;
  std::size_t count = 0;
  const AddResult result = addFiles(archive.writer(), source, {}, count);
  // An archive that lacks the last files replaces the old one too, but not a part of one.
  return result != AddResult::NotWritten && archive.complete() && result == AddResult::Added;
}

bool FileSystem::packFolder(const char* folder, const char* zip, const PackOptions& options,
                            PackReport& report) {
  PackReport::File failed{zip, PackReport::Reason::NotWritten};
  const bool isAes = options.encryption == ZipArchive::Encryption::Aes256;
  const char* const password = options.password.empty() ? nullptr : options.password.c_str();
  zip::NewArchive archive(zip);
  if (!archive || (isAes && !ArchiveWriter::hasAes())) {
    report.files.push_back(std::move(failed));
    return false;
  }
  const std::string base = Detail::withBackslash(folder);
  std::optional<std::vector<std::string>> files = zip::packableFiles(base, zip, report);
  if (!files) return false;
  const bool isPacked = packAll(archive, {base, std::move(*files)}, {password, isAes}, failed);
  if (!isPacked) report.files.push_back(std::move(failed));
  return isPacked;
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
