#pragma once
// Entries out of an archive that stays open: one reader for a whole list.

#include <optional>
#include <string>
#include <vector>

#include "platform/confined_directory.h"
#include "platform/large_memory.h"
#include "zip/zip_archive_private.h"

namespace zip {

class Extractor {
 public:
  // Opens the archive. `password` is null for none, and stays the caller's.
  Extractor(const char* archive, const char* password);

  // Whether the archive could be opened.
  explicit operator bool() const { return static_cast<bool>(reader_); }

  // The names of all entries, as stored, cut at kLongestName bytes.
  std::vector<std::string> names();
  // Writes an entry, by its stored name, to a file. Missing folders are made; an
  // existing file is replaced whole or not at all.
  bool toFile(const std::string& stored, const std::string& target);
  // As toFile, to the place that the entry's name tells under `prefix`; a name
  // that leads out of it is refused, and so is a way through a link.
  bool toPlace(const std::string& stored, const std::string& prefix, const std::string& name);
  // Reads an entry. `bytes` is unchanged if there is no such entry or it cannot be opened, and
  // empty if it turns out damaged.
  bool toBytes(const std::string& stored, std::vector<unsigned char>& bytes);

 private:
  // Makes the entry of that stored name the current one.
  bool locate(const std::string& stored);
  bool describe(ZipEntryInfo& info);
  // Writes an entry to a file. The first `folderLength` bytes of its path are the folder, which may
  // lie behind links; past them no link is followed.
  bool write(const std::string& stored, const std::string& target, std::size_t folderLength);
  bool copyBlocks(HANDLE file, std::uint32_t entrySize);
  bool openFolder(const std::string& path);

  Reader reader_;
  const char* password_;
  platform::Room content_;                             // of the last toFile
  std::optional<platform::ConfinedDirectory> folder_;  // of the last file written
  std::string folderPath_;
};

}  // namespace zip
