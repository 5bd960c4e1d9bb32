#include "archive.h"

#include <filesystem/files.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "output.h"
#include "paths.h"
#include "text.h"
#include "wildcard.h"

namespace {

bool isWriting(unsigned int access) { return (access & FileSystem::kAccessWrite) != 0; }

}  // namespace

std::string methodName(std::uint16_t method) {
  constexpr std::pair<std::uint16_t, const char*> kNames[] = {
      {0, "stored"}, {1, "shrink"}, {6, "implode"},    {8, "deflate"}, {9, "Deflate64"},
      {12, "bzip2"}, {14, "LZMA"},  {93, "Zstandard"}, {95, "XZ"},     {98, "PPMd"}};
  for (const auto& [number, name] : kNames) {
    if (number == method) return name;
  }
  return std::to_string(method);
}

bool Entry::isDirectory() const {
  constexpr std::uint32_t kDirectory = 0x10;
  if (!name.empty() && isSeparator(name.back())) return true;
  return (record.attributes & kDirectory) != 0 && record.size == 0;
}

Archive::Archive(const std::string& path, unsigned int access) : path_(path) {
  if (zip_.open(path.c_str(), access) == 0) {
    if (FileSystem::FolderExists(path.c_str()) != 0) {
      throw Failure(inQuotes(path) + " is a directory");
    }
    if (isWriting(access) && FileSystem::TestOpen(path.c_str(), FileSystem::kAccessRead) != 0) {
      throw Failure("cannot write to " + inQuotes(path) +
                    ": it is read-only, or another program uses it");
    }
    throw Failure("cannot open " + inQuotes(path) +
                  ": it does not exist, cannot be read, or another program uses it");
  }
  // An archive without entries has no complete list either.
  std::vector<std::pair<std::string, std::string>> content;
  if (zip_.enumerate(names_) == 0 && (zip_.content(content) == 0 || !names_.empty())) {
    const bool isSplit = isSplitArchive(systemPath(path));
    throw Failure(inQuotes(path) + (isSplit ? " is part of a split archive, which is not supported"
                                            : " is not a sound zip archive"));
  }
}

std::vector<Entry> Archive::entries() const {
  auto directory = readCentralDirectory(systemPath(path_), names_.size());
  if (!directory) {
    throw Failure("cannot read the directory of " + inQuotes(path_));
  }
  std::vector<Entry> result;
  result.reserve(names_.size());
  for (std::size_t i = 0; i < names_.size(); ++i) {
    result.push_back({names_[i], std::move(directory->records[i])});
  }
  return result;
}

std::vector<std::size_t> selectEntries(const std::vector<std::string>& names,
                                       const std::vector<std::string>& patterns,
                                       const std::string& zip) {
  std::vector<bool> isSelected(names.size(), false);
  for (const std::string& pattern : patterns) {
    const bool isName = std::find(names.begin(), names.end(), pattern) != names.end();
    bool any = false;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (isName ? names[i] != pattern : !matches(pattern, names[i])) continue;
      isSelected[i] = true;
      any = true;
    }
    if (!any) throw Failure(inQuotes(zip) + " has no entry " + inQuotes(pattern));
  }
  std::vector<std::size_t> result;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (isSelected[i]) result.push_back(i);
  }
  return result;
}

std::vector<bool> lastOfNames(const std::vector<Entry>& entries) {
  std::vector<bool> isLast(entries.size());
  std::unordered_set<std::string_view> seen;
  for (std::size_t i = entries.size(); i-- > 0;) isLast[i] = seen.insert(entries[i].name).second;
  return isLast;
}

std::string readFailure(const Entry& entry, bool hasPassword) {
  const EntryRecord& record = entry.record;
  if (record.nameLength > kLongestEntryName) {
    return "its name has more than " + std::to_string(kLongestEntryName) + " bytes";
  }
  if (record.encryption == Encryption::kStrong) return "its encryption method is not supported";
  if (record.method != 0 && record.method != 8) {
    return "its compression method, " + methodName(record.method) + ", is not supported";
  }
  if (record.size > 0xFFFFFFFF || record.packedSize > 0xFFFFFFFF) {
    return "it has 4 GiB or more, which is not supported";
  }
  if (record.encryption == Encryption::kAes &&
      ZipArchive().setEncryption("", ZipArchive::Encryption::Aes256) == 0) {
    return "it is encrypted with AES, and the library was built without that";
  }
  if (record.encryption != Encryption::kNone && !hasPassword) {
    return "it is encrypted and needs a password";
  }
  if (record.encryption != Encryption::kNone) return "the password is wrong or it is damaged";
  return "it is damaged";
}
