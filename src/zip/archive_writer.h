#pragma once
// Writing an archive through the zip engine.

#include <filesystem/options.h>
#include <filesystem/results.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/win32.h"
#include "zip/entry_metadata.h"

struct ZipWriter;

namespace zip {

class ArchiveReader;

// CRC-32 (ISO 3309) of data that arrive in pieces.
class Crc32 {
 public:
  void add(const unsigned char* data, std::uint32_t size);
  std::uint32_t value() const { return value_; }

 private:
  std::uint32_t value_ = 0;  // that of no data
};

// How the content of new entries is encrypted.
struct Encryption {
  const char* password = nullptr;  // null for none
  bool isAes = false;              // AES-256; else the traditional encryption

  // True if the encryption begins with a part of the CRC of the whole content, if that is known.
  bool needsCrc() const { return password != nullptr && !isAes; }
};

// The description of an entry that is to be written.
struct NewEntry {
  std::string name;     // as stored, at most kLongestName bytes
  const char* comment;  // not null
  EntryMetadata metadata;
  Encryption encryption;
  // Of the whole content. Used if the encryption needs it; nothing if it is not known then.
  std::optional<std::uint32_t> crc;
  FileSystem::Method method = FileSystem::Method::Deflate;
  // Of the whole content; nothing if it is not known then. Content that turns out to have 4 GiB or
  // more although this is much less fails the entry.
  std::optional<std::uint64_t> size;
  int level = kDefaultLevel;  // of compression; 0 to store the content

  static constexpr int kDefaultLevel = -1;
};

// Returns why an archive could not be opened, with the system's error, ERROR_SUCCESS for none.
FileSystem::Reason reasonForArchive(const char* path, DWORD error);

// An archive open for writing. The file keeps its former content until commit(). An entry is
// written by begin(), write() and finish(); one that is not finished is dropped.
class ArchiveWriter {
 public:
  enum class Mode {
    Create,  // a new archive, in the place of an existing file
    Append,  // an archive, or a file without bytes
  };
  enum class Commit {
    Complete,
    Partial,  // the disk had space for the first entries only; the others are missing
    Failed,   // the file is byte for byte unchanged, and empty in the mode Create
  };

  ArchiveWriter(const char* path, Mode mode);
  ArchiveWriter(const ArchiveWriter&) = delete;
  ArchiveWriter& operator=(const ArchiveWriter&) = delete;
  // Leaves the file as it is if commit() was not called.
  ~ArchiveWriter();

  // True if the build can write AES entries.
  static bool hasAes();
  // True if it can write entries of the method.
  static bool hasMethod(FileSystem::Method method);

  // Chooses whether the names of the entries that are begun from now on are stored with `/` in
  // place of `\`. At first they are not.
  void useSlashes(bool slashes);

  // False if the file could not be opened, or, in the mode Append, is no archive.
  explicit operator bool() const { return writer_ != nullptr; }

  // Makes commit() have the space for all entries or fail.
  void requireAll();
  // Calls `visit(name)` with the stored name of each entry of the archive that was opened.
  void forEachName(const std::function<void(const std::string&)>& visit) const;

  // Begins an entry. False if it cannot be written, as with a name that is too long.
  bool begin(const NewEntry& entry);
  // Appends to the entry's content. After a failure finish() fails too.
  bool write(const unsigned char* data, std::uint32_t size);
  // Completes the entry. On failure the archive does not get it.
  bool finish();

  // Why the archive was not opened, or why the last function that failed did.
  FileSystem::Reason reason() const { return reason_; }
  // True if that is the archive's failure, and not one of the entry.
  bool isArchiveAtFault() const { return isArchiveAtFault_; }

  // Takes the entries out of the archive for whose stored names `drops(name)` is true, at the
  // commit, which then fails if the disk lacks the space for one of the new ones. Returns the
  // number of those that stay. Called at most once, in the mode Append.
  std::uint32_t drop(const std::function<bool(const std::string&)>& drops);
  // Leaves the file as it is, and closes it.
  void abandon();

  // Copies a reader's current entry as it is stored: data, time, attributes, extra fields, comment.
  // Calls `advance` with the size of each block; false ends the copy. On failure the archive does
  // not get the entry.
  bool copy(ArchiveReader& from, const std::function<bool(std::uint64_t)>& advance);

  // Ends the archive with its directory and closes it. A null comment keeps the archive's comment.
  Commit commit(const char* globalComment);

 private:
  bool fail(FileSystem::Reason reason);
  bool succeeded(int status);

  ZipWriter* writer_;
  FileSystem::Reason reason_ = FileSystem::Reason::None;
  bool isArchiveAtFault_ = false;
};

}  // namespace zip
