#pragma once
// Extracting entries from an open archive.

#include <filesystem/zip_archive.h>

#include <cstdint>
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
  struct Outcome {
    ZipArchive::Extraction::Result result;
    std::uint64_t former = 0;  // the id of the name whose file it is, for SameFile
  };

  // `password` is null for none. Both arguments must outlive the object.
  Extractor(ArchiveReader& archive, const char* password)
      : archive_(archive), password_(password) {}

  // Writes an entry, by its stored name, to a file. Creates missing directories. An existing file
  // is replaced whole or not at all; a link is replaced itself.
  bool toFile(const std::string& stored, const std::string& target);
  // As toFile(), where only the first `prefixLength` bytes of the target are trusted and the rest
  // is the entry's name. Fails if that name escapes the directory or passes through a link, or if
  // its file was written under another `id`, which is not 0.
  Outcome toFileBelow(const std::string& stored, const std::string& target,
                      std::size_t prefixLength, ZipArchive::ExistingFiles existing,
                      std::uint64_t id);
  // Reads an entry. `bytes` is unchanged if there is no such entry or it cannot be opened, and
  // empty if its data are damaged.
  bool toBytes(const std::string& stored, std::vector<unsigned char>& bytes);

 private:
  // Writes an entry below the directory that the first `directoryLength` bytes of the target name.
  Outcome write(const std::string& stored, const std::string& target, std::size_t directoryLength,
                ZipArchive::ExistingFiles existing, std::uint64_t id);
  // Sets `isSound` to false if the entry cannot be read to its end.
  bool copyBlocks(OpenEntry& entry, HANDLE file, bool& isSound);
  bool openDirectory(const std::string& path);

  ArchiveReader& archive_;
  const char* password_;
  platform::ReusableBuffer content_;
  std::optional<platform::ConfinedDirectory> directory_;
  std::string directoryPath_;
};

}  // namespace zip
