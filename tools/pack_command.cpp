// pack.

#include <filesystem/files.h>
#include <filesystem/zip.h>

#include <cstdint>

#include "archive.h"
#include "commands.h"
#include "file_tree.h"
#include "packed_bytes.h"
#include "password.h"
#include "paths.h"
#include "progress.h"
#include "text.h"

namespace {

using Reason = FileSystem::PackReport::Reason;

std::uint64_t totalSize(const std::string& base) {
  std::uint64_t total = 0;
  for (const std::string& file : filesBelow(base).files) total += fileSize(base + file);
  return total;
}

std::string textOf(Reason reason) {
  switch (reason) {
    case Reason::NotAFile:
      return "it is neither a file nor a directory, or a link without a target";
    case Reason::Unreadable:
      return "it cannot be read, or another program uses it";
    case Reason::TooLarge:
      return "it has 4 GiB or more, which is not supported";
    case Reason::NameTooLong:
      return "its name has more than " + std::to_string(kLongestEntryName) + " bytes";
    case Reason::PathTooLong:
      return "its path has more than " + std::to_string(kLongestPath) + " bytes";
    case Reason::NotWritten:
      return "its directory or the disk does not take it, or another program uses it";
  }
  return {};
}

// Names each file below `base` that was not packed. Throws if it is the archive that failed.
void report(const FileSystem::PackReport& report, const std::string& base, Output& output) {
  for (const auto& [path, reason] : report.files) {
    if (reason == Reason::NotWritten) {
      throw Failure("cannot write " + inQuotes(path) + ", which is unchanged: " + textOf(reason));
    }
    const std::string name =
        nativePath(path.size() > base.size() ? path.substr(base.size()) : path);
    const char* const action = reason == Reason::NotAFile ? "left out " : "cannot pack ";
    output.fail(action + inQuotes(name) + ": " + textOf(reason));
  }
}

}  // namespace

void pack(const std::string& directory, const std::string& zip, const EncryptionRequest& encryption,
          Output& output) {
  if (FileSystem::FolderExists(directory.c_str()) == 0) {
    throw Failure("there is no directory " + inQuotes(directory));
  }
  const NewPassword password = newPassword(encryption, output);
  const std::string base = withBackslash(directory);
  FileSystem::PackReport leftOut;
  bool isPacked = false;
  {
    const std::uint64_t total = Progress::isShown(output) ? totalSize(base) : 0;
    const Progress progress(output, "packing " + directory, total, PackedBytes(zip));
    isPacked = FileSystem::packFolder(base.c_str(), zip.c_str(),
                                      {password.text, password.encryption}, leftOut);
  }
  report(leftOut, base, output);
  if (!isPacked) {
    throw Failure("nothing was packed, and " + inQuotes(zip) + " is unchanged");
  }
  const std::vector<std::string> names = Archive(zip, FileSystem::kAccessRead).names();
  for (const std::string& name : names) output.detail("packed " + printable(name));
  output.summary("packed " + counted(names.size(), "file", "files") + " into " + printable(zip));
}
