// FRT_ZIP_FOLDER and FRT_UNZIP_FILE.

#include <filesystem/enumeration.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <string>
#include <vector>

#include "path/with_backslash.h"
#include "platform/file_identity.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_names.h"
#include "zip/extraction.h"
#include "zip/insertion.h"

namespace {

bool isSameFile(const char* a, const char* b) {
  platform::FileIdentity first;
  platform::FileIdentity second;
  return platform::fileIdentity(a, first) && platform::fileIdentity(b, second) && first == second;
}

// Adds the files, named by their paths below `folder`, up to the first one that fails.
bool addFiles(zip::ArchiveWriter& writer, const std::vector<std::string>& files,
              const std::string& folder, const char* archive) {
  for (const std::string& file : files) {
    const std::string name = zip::storedName(FileSystem::subPath(folder, file));
    if (zip::addFile(writer, file.c_str(), name, "", nullptr)) continue;
    // The archive that is being written is not packed into itself.
    if (!isSameFile(file.c_str(), archive)) return false;
  }
  return true;
}

}  // namespace

bool FRT_ZIP_FOLDER(const char* folder, const char* zip) {
  const std::string base = FileSystem::Detail::withBackslash(folder);
  std::vector<std::string> files;
  FileSystem::EnumFilesWithPath(files, base.c_str(), "*.*", true);
  zip::ArchiveWriter writer(zip, zip::ArchiveWriter::Mode::Create);
  if (!writer) return false;
  const bool complete = addFiles(writer, files, base, zip);
  return writer.commit(nullptr) == zip::ArchiveWriter::Commit::Complete && complete;
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
