// pack.

#include <filesystem/enumeration.h>
#include <filesystem/files.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "commands.h"
#include "file_tree.h"
#include "packed_bytes.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"

namespace {

std::uint64_t totalSize(const std::string& base, const std::vector<std::string>& files) {
  std::uint64_t total = 0;
  for (const std::string& file : files) total += fileSize(base + file);
  return total;
}

std::vector<std::string> namesIn(const std::string& zip) {
  ZipArchive archive;
  std::vector<std::string> names;
  if (archive.open(zip.c_str(), FileSystem::kAccessRead) != 0) archive.enumerate(names);
  return names;
}

// Reports every file of the tree that is not in the archive. The archive itself
// may be in the tree.
void reportLeftOut(const std::string& base, const std::string& zip,
                   const std::vector<std::string>& files, std::vector<std::string> packed,
                   Output& output) {
  std::sort(packed.begin(), packed.end());
  std::vector<std::string> missing;
  std::set_difference(files.begin(), files.end(), packed.begin(), packed.end(),
                      std::back_inserter(missing));
  for (const std::string& name : missing) {
    if (isSameFile(base + name, zip)) continue;
    output.fail("left out " + inQuotes(nativePath(name)) + ": " + readFailure(base + name));
  }
}

// The library packs files in the order of their listing and stops at the first
// that fails.
[[noreturn]] void throwStopped(const std::string& base, const std::string& zip,
                               std::size_t packed) {
  std::vector<std::string> files;
  FileSystem::EnumFilesWithPath(files, base.c_str(), "*.*", true);
  std::erase_if(files, [&](const std::string& file) { return isSameFile(file, zip); });
  const std::string where =
      packed < files.size() ? " at " + inQuotes(nativePath(files[packed])) : "";
  throw Failure("packing stopped" + where + ": it cannot be read, or " + inQuotes(zip) +
                " cannot be written; the archive holds " + counted(packed, "file", "files"));
}

}  // namespace

void pack(const std::string& directory, const std::string& zip, const EncryptionRequest& encryption,
          Output& output) {
  if (FileSystem::FolderExists(directory.c_str()) == 0) {
    throw Failure("there is no directory " + inQuotes(directory));
  }
  const NewPassword password = newPassword(encryption, output);
  const std::string base = withBackslash(directory);
  const std::vector<std::string> files = filesBelow(base, output);
  bool isPacked = false;
  {
    const std::uint64_t total = Progress::isShown(output) ? totalSize(base, files) : 0;
    const Progress progress(output, "packing " + directory, total, PackedBytes(zip));
    FileSystem::PackReport report;
    isPacked = FileSystem::packFolder(base.c_str(), zip.c_str(),
                                      {password.text, password.encryption}, report);
  }
  const std::vector<std::string> names = namesIn(zip);
  if (!isPacked && FileSystem::TestOpen(zip.c_str(), FileSystem::kAccessRead) == 0) {
    throw Failure("cannot create " + inQuotes(zip));
  }
  if (!isPacked) throwStopped(base, zip, names.size());
  for (const std::string& name : names) output.detail("packed " + printable(name));
  reportLeftOut(base, zip, files, names, output);
  output.summary("packed " + counted(names.size(), "file", "files") + " into " + printable(zip));
}
