#include "extraction.h"

#include <filesystem/files.h>

#include <vector>

namespace {

// True if the entry's content can be read. Entries of more than this size are not
// read again for the sake of a message.
bool isReadable(Archive& archive, const Entry& entry) {
  constexpr std::uint64_t kLargestRead = 256 << 20;
  if (entry.record.size == 0) return entry.record.crc == 0;
  if (entry.record.size > kLargestRead) return false;
  std::vector<unsigned char> bytes;
  return archive.zip().extract(entry.name.c_str(), bytes) != 0;
}

std::string writeFailure(const Entry& entry, const std::string& target) {
  if (entry.isDirectory()) return "the directory cannot be created, or a link is on its path";
  if (FileSystem::FolderExists(target.c_str()) != 0) return "a directory has its name";
  if (FileSystem::FileExists(target.c_str()) == 0) {
    return "the file cannot be created, or a link is on its path";
  }
  if (FileSystem::IsFileReadOnly(target.c_str()) != 0) {
    return "the existing file is read-only and cannot be replaced";
  }
  return "the existing file cannot be replaced, or another program uses it";
}

}  // namespace

std::string extractionFailure(Archive& archive, const Entry& entry, const std::string& target,
                              bool hasPassword) {
  return isReadable(archive, entry) ? writeFailure(entry, target) : readFailure(entry, hasPassword);
}

std::string extractionFailure(ZipArchive::Extraction::Result result, const Entry& entry,
                              const std::string& target, bool hasPassword) {
  using Result = ZipArchive::Extraction::Result;
  if (result == Result::Escapes) return "its name leads outside the directory";
  const bool isRead = result == Result::NotWritten || entry.isDirectory();
  return isRead ? writeFailure(entry, target) : readFailure(entry, hasPassword);
}
