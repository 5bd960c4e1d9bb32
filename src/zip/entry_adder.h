#pragma once
// Adding entries to an archive that is written.

#include <filesystem/archive_change.h>
#include <filesystem/options.h>
#include <filesystem/results.h>

#include <string>
#include <vector>

#include "reporting/progress_relay.h"
#include "zip/archive_writer.h"
#include "zip/entry_metadata.h"

namespace zip {

// What all entries of a call have in common.
struct EntrySettings {
  Encryption encryption;
  int level = NewEntry::kDefaultLevel;
  FileSystem::Method method = FileSystem::Method::Deflate;
  // What entries keep of files. Without it that is the time, with the present offset of local time,
  // and the attributes.
  std::optional<KeptMetadata> kept{};
};

// Sets what the options of a host say. Fails if the build lacks the encryption or the method. The
// options outlive the settings.
FileSystem::Reason readSettings(const FileSystem::Options& options, EntrySettings& settings);

// Adds entries under stored names. On failure the archive does not get the entry. The progress is
// that of the bytes; it can cancel the entry.
class EntryAdder {
 public:
  EntryAdder(ArchiveWriter& writer, const EntrySettings& settings,
             FileSystem::Detail::ProgressRelay& progress)
      : writer_(writer), settings_(settings), progress_(progress) {}

  // Adds a file, with what is kept of it. The file is read in blocks.
  FileSystem::Reason addFile(const char* source, const std::string& stored, const char* comment);
  // Adds a link itself, whose content is its target.
  FileSystem::Reason addLink(const char* source, const std::string& stored);
  // Adds a folder itself. Its stored name ends in a separator.
  FileSystem::Reason addFolder(const char* source, const std::string& stored);
  // Adds bytes.
  FileSystem::Reason addBytes(const std::vector<unsigned char>& bytes, const std::string& stored,
                              const char* comment, const EntryMetadata& metadata);
  // Adds an entry that another adder has prepared, and reports its bytes as for a file.
  FileSystem::Reason addPrepared(const PreparedEntry& entry);
  // Adds what a function of the host provides.
  FileSystem::Reason addFrom(const FileSystem::ContentSource& source, const std::string& stored,
                             const char* comment, const EntryMetadata& metadata);

 private:
  bool describe(HANDLE file, const char* source, EntryMetadata& metadata,
                std::uint64_t& size) const;
  bool write(const unsigned char* data, std::size_t size);
  FileSystem::Reason finish();
  FileSystem::Reason failure() const;

  ArchiveWriter& writer_;
  const EntrySettings settings_;
  FileSystem::Detail::ProgressRelay& progress_;
};

}  // namespace zip
