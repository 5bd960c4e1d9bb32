#pragma once
// Writing an archive through the zip engine.

#include <filesystem/options.h>
#include <filesystem/results.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/win32.h"
#include "zip/entry_metadata.h"

struct ZipPreparedEntry;
struct ZipWriter;

namespace zip {

class ArchiveReader;
class HostWorkers;

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

// An entry in memory, for a writer to append.
class PreparedEntry {
 public:
  // Takes an entry of the engine.
  explicit PreparedEntry(ZipPreparedEntry* entry) : entry_(entry) {}

  // The number of bytes of its content.
  std::uint64_t contentSize() const;

 private:
  friend class ArchiveWriter;
  struct Deleter {
    void operator()(ZipPreparedEntry* entry) const;
  };
  std::unique_ptr<ZipPreparedEntry, Deleter> entry_;
};

// An archive open for writing. The file keeps its former content until commit(). An entry is
// written by begin(), write() and finish(); one that is not finished is dropped.
//
// A writer without an archive prepares entries instead, in any thread, each of which takePrepared()
// returns when it is finished.
class ArchiveWriter {
 public:
  enum class Mode {
    Create,  // a new archive, in the place of an existing file
    Append,  // an archive, or a file without bytes
  };

  // The most bytes of content of an entry that is prepared.
  static constexpr std::uint64_t kLargestPrepared = 4 << 20;

  ArchiveWriter(const char* path, Mode mode);
  // Has no archive.
  ArchiveWriter();
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

  // Makes large entries be deflated by the workers too. They outlive the object.
  void useWorkers(HostWorkers& workers);

  // False if the file could not be opened, or, in the mode Append, is no archive.
  explicit operator bool() const { return writer_ != nullptr; }

  // Makes commit() commit the file to the disk in the mode Create too. Network file systems report
  // only then that they have not stored it.
  void makeDurable();
  // Reports whether the archive that was opened has an entry of that stored name.
  bool has(const std::string& stored) const;
  // Calls `visit(name)` with the stored name of each entry of the archive that was opened.
  void forEachName(const std::function<void(const std::string&)>& visit) const;

  // Begins an entry. False if it cannot be written, as with a name that is too long.
  bool begin(const NewEntry& entry);
  // Appends to the entry's content. After a failure finish() fails too.
  bool write(const unsigned char* data, std::uint32_t size);
  // Completes the entry. On failure the archive does not get it.
  bool finish();

  // True if entries with so many bytes of content are not too large for memory, without an archive.
  bool accepts(std::uint64_t size) const { return !isPreparing_ || size <= kLargestPrepared; }
  // Returns the last entry that was finished, without an archive; nothing if it was returned before.
  std::optional<PreparedEntry> takePrepared();
  // Appends an entry that another writer has prepared.
  bool append(const PreparedEntry& entry);

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

  // Ends the archive with its directory and closes it. A null comment keeps the archive's comment. On
  // failure the file is byte for byte unchanged, and of no use in the mode Create.
  bool commit(const char* globalComment);

 private:
  bool fail(FileSystem::Reason reason);
  bool succeeded(int status);

  ZipWriter* writer_;
  bool isPreparing_ = false;
  FileSystem::Reason reason_ = FileSystem::Reason::None;
  bool isArchiveAtFault_ = false;
};

}  // namespace zip
