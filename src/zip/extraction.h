#pragma once
// Extracting entries from an open archive.

#include <filesystem/archive.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/confined_directory.h"
#include "platform/large_memory.h"
#include "reporting/progress_relay.h"
#include "zip/archive_reader.h"

namespace zip {

// Extracts the reader's current entry, one after the other. Keeps the memory for the content and
// the open directory of the last file for the next call.
class Extractor {
 public:
  struct Outcome {
    FileSystem::Reason reason = FileSystem::Reason::None;
    std::uint64_t former = 0;  // with Reason::SameFile the id of the name whose file it is
  };

  // `password` is null for none. All arguments must outlive the object.
  Extractor(ArchiveReader& archive, const char* password,
            FileSystem::Detail::ProgressRelay& progress)
      : archive_(archive), password_(password), progress_(progress) {}

  // Writes the entry to a file. Creates missing directories. An existing file is replaced whole or
  // not at all, or kept; a link is replaced itself.
  Outcome toFile(const std::string& target, FileSystem::ExistingFiles existing,
                 const platform::NewMetadata& metadata = {});
  // As toFile(), where only the first `prefixLength` bytes of the target are trusted and the rest
  // is the entry's name. Fails if that name escapes the directory or passes through a link, or if
  // its file was written under another `id`, which is not 0.
  Outcome toFileBelow(const std::string& target, std::size_t prefixLength,
                      FileSystem::ExistingFiles existing, std::uint64_t id);
  // As toFileBelow(), where the first bytes are the path of a folder, with a separator at its end, and
  // the name was checked. The file gets the metadata.
  Outcome toFileIn(const std::string& target, std::size_t folderLength,
                   FileSystem::ExistingFiles existing, std::uint64_t id,
                   const platform::NewMetadata& metadata);
  // Create the link whose target the content is, as toFile() and toFileIn() do.
  Outcome toLink(const std::string& target, FileSystem::ExistingFiles existing,
                 const platform::NewMetadata& metadata);
  Outcome toLinkIn(const std::string& target, std::size_t folderLength,
                   FileSystem::ExistingFiles existing, std::uint64_t id,
                   const platform::NewMetadata& metadata);

  // Opens the folder that the next entries are written to. `isNew` says that it was created for them.
  FileSystem::Reason beginFolder(const std::string& folder, bool isNew);
  // Creates the folder that the entry is, and those on the way to it, as toFileIn() does.
  FileSystem::Reason createFolder(const std::string& target, std::size_t folderLength,
                                  const platform::NewMetadata& metadata, std::size_t index);
  // Gives the folders that were created their metadata. Calls `failed` for each that cannot get it,
  // with its index.
  void finishFolders(const std::function<void(std::size_t, FileSystem::Reason)>& failed);
  // Reads the entry. `bytes` is unchanged if it cannot be opened, or has more than 4 GiB - 1 bytes
  // (Reason::TooLarge), and empty if its data are damaged or too large for the memory.
  FileSystem::Reason toBytes(std::vector<unsigned char>& bytes);
  // Passes the content on piece by piece. `sink` returns false on failure, for which the result is
  // Reason::Cancelled.
  FileSystem::Reason toSink(const FileSystem::Sink& sink);

 private:
  // Writes the entry below the directory that the first `directoryLength` bytes of the target name.
  Outcome write(const std::string& target, std::size_t directoryLength,
                FileSystem::ExistingFiles existing, std::uint64_t id,
                const platform::NewMetadata& metadata);
  Outcome writeTarget(const std::string& target, std::size_t directoryLength,
                      const platform::ConfinedDirectory::Fill& fill,
                      FileSystem::ExistingFiles existing, std::uint64_t id,
                      const platform::NewMetadata& metadata);
  FileSystem::Reason readLink(std::string& target);
  FileSystem::Reason readWhole(OpenEntry& entry);
  FileSystem::Reason writeContent(OpenEntry& entry, HANDLE file);
  FileSystem::Reason readAll(OpenEntry& entry, std::vector<unsigned char>& bytes);
  FileSystem::Reason readGrowing(OpenEntry& entry, std::size_t size,
                                 std::vector<unsigned char>& bytes);
  FileSystem::Reason copyPieces(OpenEntry& entry, const FileSystem::Sink& sink);
  bool openDirectory(const std::string& path);

  ArchiveReader& archive_;
  const char* password_;
  FileSystem::Detail::ProgressRelay& progress_;
  platform::ReusableBuffer content_;
  std::optional<platform::ConfinedDirectory> directory_;
  std::string directoryPath_;
};

}  // namespace zip
