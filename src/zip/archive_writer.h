#pragma once
// Writing an archive through the zip engine.

#include <cstdint>
#include <functional>
#include <string>

#include "platform/win32.h"

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

  // True if the engine must be passed the CRC of the whole content when an entry is begun.
  bool needsCrc() const { return password != nullptr && !isAes; }
};

// The description of an entry that is to be written.
struct NewEntry {
  std::string name;     // as stored, at most kLongestName bytes
  const char* comment;  // not null
  SYSTEMTIME time;
  DWORD attributes;
  Encryption encryption;
  std::uint32_t crc;  // of the whole content if the encryption needs it, else that of no data
};

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
  // Commits if commit() was not called.
  ~ArchiveWriter();

  // True if the build can write AES entries.
  static bool hasAes();

  // Chooses whether the names of the entries that are begun from now on are stored with `/` in
  // place of `\`. At first they are not.
  void useSlashes(bool slashes);

  // False if the file could not be opened, or, in the mode Append, is no archive.
  explicit operator bool() const { return writer_ != nullptr; }

  // Begins an entry. False if it cannot be written, as with a name that is too long.
  bool begin(const NewEntry& entry);
  // Appends to the entry's content. After a failure finish() fails too.
  bool write(const unsigned char* data, std::uint32_t size);
  // Completes the entry. On failure the archive does not get it.
  bool finish();

  enum class Failure {
    TooLarge,  // the entry has too many bytes
    WrongCrc,  // the content is not the one whose CRC was passed
    Archive,   // the archive cannot be written
  };
  // The reason of the last failure of write() or finish().
  Failure failure() const;

  // Takes the entries out of the archive for whose stored names `drops(name)` is true, at the
  // commit, which then fails if the disk lacks the space for one of the new ones. Returns the
  // number of those that stay. Called at most once, in the mode Append.
  std::uint32_t drop(const std::function<bool(const std::string&)>& drops);
  // Leaves the file as it is, and closes it.
  void abandon();

  // Copies a reader's current entry as it is stored: data, time, attributes, extra fields, comment.
  // On failure the archive does not get it.
  bool copy(ArchiveReader& from);

  // Ends the archive with its directory and closes it. A null comment keeps the archive's comment.
  Commit commit(const char* globalComment);

 private:
  bool succeeded(int status);

  ZipWriter* writer_;
  int status_ = 0;
};

}  // namespace zip
