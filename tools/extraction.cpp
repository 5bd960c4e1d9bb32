#include "extraction.h"

#include <filesystem/files.h>

#include <algorithm>
#include <vector>

#include "paths.h"

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

}  // namespace

bool leavesDirectory(std::string_view name) {
  if (name.empty() || isSeparator(name[0])) return true;
  const char drive = static_cast<char>(name[0] | 0x20);
  if (name.size() > 1 && name[1] == ':' && drive >= 'a' && drive <= 'z') return true;
  for (std::size_t start = 0; start < name.size();) {
    const std::size_t end = std::min(name.find_first_of("\\/", start), name.size());
    if (name.substr(start, end - start) == "..") return true;
    start = end + 1;
  }
  return false;
}

std::string extractionFailure(Archive& archive, const Entry& entry, const std::string& target,
                              bool hasPassword) {
  if (leavesDirectory(entry.name)) return "its name leads outside the directory";
  if (entry.isDirectory()) return "the directory cannot be created, or a link is on its path";
  if (!isReadable(archive, entry)) return readFailure(entry, hasPassword);
  if (FileSystem::FolderExists(target.c_str()) != 0) return "a directory has its name";
  if (FileSystem::FileExists(target.c_str()) == 0) {
    return "the file cannot be created, or a link is on its path";
  }
  if (FileSystem::IsFileReadOnly(target.c_str()) != 0) {
    return "the existing file is read-only and cannot be replaced";
  }
  return "the existing file cannot be replaced, or another program uses it";
}
