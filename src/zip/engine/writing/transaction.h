#pragma once
// Appending to an archive in place.
//
// New entries and the new directory belong where the old directory is. If it were overwritten
// directly, an interruption would leave an archive without a directory. If they were written after
// it, each append would leave a dead directory in the file. Copying the archive would make an
// append as expensive as its size. So a copy of the old directory, with an end record of its own,
// is first written past the place where the finished file will end: the backup directory.
//
//      | entries | directory | end |
//   1  | entries | directory | end |             | backup directory | end |
//   2  | entries | new entries | new directory | end | backup directory | end |
//   3  | entries | new entries | new directory | end |
//
// Step 3, the truncation, is the commit. Each step is committed to the disk before the next one
// begins, so that a power failure leaves the archive of before or that of after the append. A
// process that is killed leaves a file whose last end record leads to a whole directory. A power
// failure during step 1 can leave any part of the backup directory; interrupted_append.h recognizes
// that.

#include <cstdint>
#include <optional>
#include <string>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

class Transaction {
 public:
  // Opens an archive or an empty file to append to it. Returns false if it cannot be opened or is
  // neither.
  bool openExisting(const char* path);
  // Creates an empty file, or empties an existing one. Nothing is committed to the disk: the file
  // has no old state to protect.
  bool createNew(const char* path);

  // The archive before the append.
  const CentralDirectory& before() const { return before_; }

  // Absolute position of the next byte that is appended.
  std::uint64_t position() const { return flushed_ + buffer_.size(); }
  // The bytes since the last flush, to append to; flushIfLarge() follows.
  Bytes& buffer() { return buffer_; }
  // The same with the capacity for a part of a large entry, always of one size: a buffer that grows
  // holds its old memory beside the new one.
  Bytes& bufferForPart(std::size_t size);
  bool append(const void* data, std::size_t size);
  // Writes the buffer out if it has grown. Its bytes are kept on failure.
  bool flushIfLarge();
  // Replaces bytes that were appended with no flush between them.
  bool patch(std::uint64_t position, const void* data, std::size_t size);
  // Undoes everything past a position that was reached before.
  void rewind(std::uint64_t position);

  // Ends the archive with a directory of the kept and the added records. Once it returns true the
  // append survives a power failure, unless the file was created. On failure, rewind() or restore()
  // follows.
  bool commit(const Bytes& kept, const Bytes& added, std::uint64_t entryCount,
              const std::string& comment);
  // Restores the file byte for byte.
  void restore();

 private:
  bool flush();
  bool isBackedUp() const;
  bool backUp(std::uint64_t distance);
  std::optional<std::uint64_t> writeBackup(std::uint64_t end);
  bool sync();

  ArchiveFile file_;
  bool durable_ = false;
  CentralDirectory before_;
  Bytes beforeTail_;  // the old bytes after the directory, if that is overwritten
  std::uint64_t beforeSize_ = 0;
  std::uint64_t start_ = 0;    // absolute; where appended bytes begin
  std::uint64_t flushed_ = 0;  // absolute; where the buffer begins
  Bytes buffer_;
  bool touched_ = false;                 // true if the file has been changed
  std::optional<std::uint64_t> backup_;  // absolute; the backup directory
};

}  // namespace zip_engine
