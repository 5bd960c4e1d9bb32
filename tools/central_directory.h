#pragma once
// The records of an archive's central directory (PKWARE APPNOTE 4.3.12): sizes,
// dates, checksums and methods, which the library does not export.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Encryption of an entry.
enum class Encryption { kNone, kTraditional, kAes, kStrong };

struct EntryRecord {
  std::string comment;
  std::uint64_t size = 0;
  std::uint64_t packedSize = 0;
  std::uint64_t headerOffset = 0;  // from the beginning of the file
  std::uint32_t crc = 0;
  std::uint32_t attributes = 0;  // external; bit 0x10 marks a directory
  std::uint32_t nameLength = 0;  // as stored
  std::uint16_t flags = 0;
  std::uint16_t method = 0;  // of AES entries the method inside the encryption
  std::uint16_t date = 0;    // MS-DOS format
  std::uint16_t time = 0;    // MS-DOS format
  Encryption encryption = Encryption::kNone;
  bool isLink = false;  // a symbolic link of Unix, whose content is its target
};

struct CentralDirectory {
  std::vector<EntryRecord> records;
  // Bytes between the last entry and the directory, or after the directory that
  // counts. An append that was interrupted leaves such bytes.
  std::uint64_t unusedBytes = 0;
};

// Reads the directory of the archive at `path`, in which the library lists `count`
// entries: that of the last end record, or of an earlier one if an append that was
// interrupted has left others after it. Returns nothing if the file cannot be read
// or has no sound directory of that size.
std::optional<CentralDirectory> readCentralDirectory(const std::filesystem::path& path,
                                                     std::size_t count);

// True if the archive at `path` is one file of several, which is not supported.
bool isSplitArchive(const std::filesystem::path& path);
