#pragma once
// Inserting entries into archives.

#include <functional>
#include <string>
#include <vector>

#include "zip/archive_reader.h"
#include "zip/archive_writer.h"

namespace zip {

// Adds bytes under a stored name, with the present time (UTC). On failure the archive does not get
// the entry.
bool addBytes(ArchiveWriter& writer, const std::vector<unsigned char>& bytes,
              const std::string& stored, const char* comment, const Encryption& encryption);

enum class AddResult {
  Added,
  Unreadable,   // the file cannot be opened or read to its end, or changes while it is read
  TooLarge,     // the file has kTooManyBytes or more
  NameTooLong,  // the entry's name or comment is too long
  NotWritten,   // the archive cannot be written
};

// The size from which on an entry is too large.
inline constexpr std::uint64_t kTooManyBytes = UINT32_MAX;

// Adds a file with its last write time (local) and attributes. The file is read in blocks.
AddResult addFile(ArchiveWriter& writer, const char* source, const std::string& stored,
                  const char* comment, const Encryption& encryption);

// True if the file can be opened for reading.
bool canOpenSource(const char* source);

// True if entries can be appended: to an archive, or to a file without bytes, which becomes one.
bool canAppend(const ArchiveReader& archive, const std::string& path);

// Appends the entries that `add` writes to such a file. If `add` returns false, nothing is appended
// unless it has completed entries.
ArchiveWriter::Commit append(const std::string& path,
                             const std::function<bool(ArchiveWriter&)>& add);

// Inserts the entry that `add` writes into the archive at `path`. An existing entry `name` is
// replaced if `overwrite` is set, else nothing is changed. If there is an entry to replace and
// `hasSource()` is false, the entry is removed and the insertion fails.
bool insertEntry(const std::string& path, const std::string& name, bool overwrite,
                 const std::function<bool()>& hasSource,
                 const std::function<bool(ArchiveWriter&)>& add);

}  // namespace zip
