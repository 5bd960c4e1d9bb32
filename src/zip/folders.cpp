// Whole folders in one call.

#include <filesystem/enumeration.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <string>
#include <vector>

#include "zip/extraction.h"
#include "zip/insertion.h"

namespace {

std::string withBackslash(const char* folder) {
  std::string text = folder;
  if (text.empty() || text.back() != '\\') text += '\\';
  return text;
}

// Whether two paths name one file. Only asked about a file that refused to be
// opened, so that its cost does not matter.
bool sameFile(const char* a, const char* b) {
  WIN32_FILE_ATTRIBUTE_DATA first = {};
  WIN32_FILE_ATTRIBUTE_DATA second = {};
  return GetFileAttributesExA(a, GetFileExInfoStandard, &first) != 0 &&
         GetFileAttributesExA(b, GetFileExInfoStandard, &second) != 0 &&
         first.ftCreationTime.dwLowDateTime == second.ftCreationTime.dwLowDateTime &&
         first.ftCreationTime.dwHighDateTime == second.ftCreationTime.dwHighDateTime &&
         first.nFileSizeLow == second.nFileSizeLow && first.nFileSizeHigh == second.nFileSizeHigh;
}

}  // namespace

bool FRT_ZIP_FOLDER(const char* folder, const char* zip) {
  const std::string base = withBackslash(folder);
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
  const std::string base = withBackslash(folder);
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
