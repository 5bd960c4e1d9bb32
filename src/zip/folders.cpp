// Whole folders in one call.

#include <filesystem/enumeration.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <string>
#include <vector>

#include "path/with_backslash.h"
#include "platform/file_identity.h"
#include "zip/extraction.h"
#include "zip/insertion.h"

namespace {

bool sameFile(const char* a, const char* b) {
  platform::FileIdentity first;
  platform::FileIdentity second;
  return platform::fileIdentity(a, first) && platform::fileIdentity(b, second) && first == second;
}

}  // namespace

bool FRT_ZIP_FOLDER(const char* folder, const char* zip) {
  const std::string base = FileSystem::Detail::withBackslash(folder);
  std::vector<std::string> files;
  FileSystem::EnumFilesWithPath(files, base.c_str(), "*.*", true);
  {
    ZipArchive archive;
    if (archive.create(zip, static_cast<int>(GENERIC_WRITE)) == 0) return false;
  }
  zip::Writer writer(zip, ZipModeAppendFirst);
  if (!writer) return false;
  for (const std::string& file : files) {
    const std::string name = zip::storedName(FileSystem::subPath(base, file));
    if (zip::addFile(writer.get(), file.c_str(), name, "", nullptr)) continue;
    // The archive that is being written is not packed into itself.
    if (sameFile(file.c_str(), zip)) continue;
    writer.commit(nullptr);
    return false;
  }
  return writer.commit(nullptr);
}

bool FRT_UNZIP_FILE(const char* zip, const char* folder) {
  const std::string base = FileSystem::Detail::withBackslash(folder);
  ZipArchive archive;
  if (archive.open(zip, GENERIC_READ) == 0) return false;
  archive.close();
  zip::Extractor extractor(zip, nullptr);
  if (!extractor) return true;
  for (const std::string& stored : extractor.names()) {
    if (!extractor.toPlace(stored, base, zip::callerName(stored))) return false;
  }
  return true;
}
