#pragma once
// Entries out of an archive that stays open: one reader for a whole list.

#include <string>
#include <vector>

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
  // Reads an entry. On failure `bytes` is empty.
  bool toBytes(const std::string& stored, std::vector<unsigned char>& bytes);

 private:
  // Makes the entry of that stored name the current one.
  bool locate(const std::string& stored);
  bool describe(ZipEntryInfo& info);
  bool copyBlocks(HANDLE file, std::uint32_t entrySize);
  void makeFolderOf(const std::string& target);

  Reader reader_;
  const char* password_;
  platform::Room content_;  // of the last toFile
  std::string lastPlace_;   // folder of the last toPlace, which is behind no link
  std::string lastFolder_;  // made by the last toFile, so that it is made once
};

}  // namespace zip
