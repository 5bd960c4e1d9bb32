#pragma once
// What entries have beside names and contents: from a file to its entry, and back.

#include <filesystem/archive.h>
#include <filesystem/options.h>

#include <cstdint>
#include <optional>

#include "platform/file_metadata.h"
#include "platform/win32.h"

namespace zip {

// What is kept of it.
struct KeptMetadata {
  bool permissions = true;
  bool times = true;
  bool setId = false;
};
KeptMetadata keptBy(const FileSystem::Options& options);

// What an entry has of a file's.
struct EntryMetadata {
  SYSTEMTIME local{};
  std::uint64_t lastWrite = 0;  // in UTC, in 100 ns since 1601; 0 if the entry has none
  DWORD attributes = 0;
  std::optional<std::uint32_t> mode{};  // of Unix, with the file type
};
EntryMetadata entryMetadata(const platform::FileMetadata& file, const KeptMetadata& kept);
// Returns that of an entry that is no file, with the present time.
EntryMetadata presentMetadata(const KeptMetadata& kept);

// Returns what the file, folder or link gets that is made from an entry.
platform::NewMetadata newMetadata(const FileSystem::Entry& entry, const KeptMetadata& kept);

// Sets the times of an entry from the local time that is stored, and the time in UTC, which is 0 if
// there is none.
void setTimes(FileSystem::Entry& entry, const FileSystem::EntryTime& stored,
              std::uint64_t lastWrite);

enum class EntryKind {
  File,
  Folder,
  Link,
  Special,  // a device or a socket
};
EntryKind kindOf(const FileSystem::Entry& entry);

// The file type in a mode of Unix, and its values.
inline constexpr std::uint32_t kFileTypes = 0170000;
inline constexpr std::uint32_t kRegularFile = 0100000;
inline constexpr std::uint32_t kDirectory = 0040000;
inline constexpr std::uint32_t kLink = 0120000;
inline constexpr std::uint32_t kPipe = 0010000;

}  // namespace zip
