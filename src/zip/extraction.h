#pragma once
// Extracting entries from an open archive.

#include <optional>
#include <string>
#include <vector>

#include "platform/confined_directory.h"
#include "platform/large_memory.h"
#include "zip/archive_reader.h"

namespace zip {

// Extracts entries one after the other. Keeps the memory for the content and the open directory of
// the last file for the next call.
class Extractor {
 public:
  // `password` is null for none. Both arguments must outlive the object.
  Extractor(ArchiveReader& archive, const char* password)
      : archive_(archive), password_(password) {}

  // Writes an entry, by its stored name, to a file. Creates missing directories. An existing file
  // is replaced whole or not at all; a link is replaced itself.
  bool toFile(const std::string& stored, const std::string& target);
  // As toFile(), where only the first `prefixLength` bytes of the target are trusted and the rest
  // is the entry's name. Fails if that name escapes the directory or passes through a link.
  bool toFileBelow(const std::string& stored, const std::string& target, std::size_t prefixLength);
  // Reads an entry. `bytes` is unchanged if there is no such entry or it cannot be opened, and
  // empty if its data are damaged.
  bool toBytes(const std::string& stored, std::vector<unsigned char>& bytes);

 private:
  // Writes an entry below the directory that the first `directoryLength` bytes of the target name.
  bool write(const std::string& stored, const std::string& target, std::size_t directoryLength);
  bool copyBlocks(OpenEntry& entry, HANDLE file);
  bool openDirectory(const std::string& path);

  ArchiveReader& archive_;
  const char* password_;
  platform::ReusableBuffer content_;
  std::optional<platform::ConfinedDirectory> directory_;
  std::string directoryPath_;
};

}  // namespace zip
