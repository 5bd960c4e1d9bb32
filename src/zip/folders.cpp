// FRT_ZIP_FOLDER and FRT_UNZIP_FILE.

#include <filesystem/enumeration.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <algorithm>
#include <string>
#include <vector>

#include "path/with_backslash.h"
#include "platform/new_version.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_names.h"
#include "zip/extraction.h"
#include "zip/insertion.h"

namespace {

// Adds the files, named by their paths below `folder`. False at the first one that fails.
bool addFiles(zip::ArchiveWriter& writer, const std::vector<std::string>& files,
              const std::string& folder, const zip::Encryption& encryption) {
  return std::all_of(files.begin(), files.end(), [&](const std::string& file) {
    const std::string name = zip::storedName(FileSystem::subPath(folder, file));
    return zip::addFile(writer, file.c_str(), name, "", encryption);
  });
}

}  // namespace

// An existing archive keeps its content until the new one is complete. It is locked before the
// files are listed, so that an archive that lies in the folder is not packed into the new one.
bool FileSystem::packFolder(const char* folder, const char* zip, const char* password,
                            ZipArchive::Encryption encryption) {
  const bool isAes = encryption == ZipArchive::Encryption::Aes256;
  if (isAes && !zip::ArchiveWriter::hasAes()) return false;
  platform::NewVersion version(zip);
  if (!version) return false;
  const std::string base = FileSystem::Detail::withBackslash(folder);
  std::vector<std::string> files;
  FileSystem::EnumFilesWithPath(files, base.c_str(), "*.*", true);

  using Commit = zip::ArchiveWriter::Commit;
  zip::ArchiveWriter writer(version.create().c_str(), zip::ArchiveWriter::Mode::Create);
  if (!writer) return false;
  const bool allAdded =
      addFiles(writer, files, base, {*password != '\0' ? password : nullptr, isAes});
  const Commit result = writer.commit(nullptr);
  if (result == Commit::Failed) return false;
  // An archive that lacks the last files replaces the old one too.
  return version.putInPlace() && allAdded && result == Commit::Complete;
}

bool FRT_ZIP_FOLDER(const char* folder, const char* zip) {
  return FileSystem::packFolder(folder, zip, "", ZipArchive::Encryption::Traditional);
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
  zip::Extractor extractor(reader, nullptr);
  for (const std::string& stored : names) {
    const std::string target = base + zip::callerName(stored);
    if (!extractor.toFileBelow(stored, target, base.size())) return false;
  }
  return true;
}
