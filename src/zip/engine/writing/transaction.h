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
//
// If the new archive has none of the old entries, their bytes are dead once it is committed. Then
// the new entries begin past the end of the old file, and a fourth and a fifth step follow:
//
//   3  | dead bytes                        | new entries | new directory | end |
//   4  | new entries | new directory | end | new entries | new directory | end |
//   5  | new entries | new directory | end |
//
// Step 4 writes into dead bytes only, and the last end record is still that of step 3. Step 5 is
// again a truncation. Without enough dead bytes both are left out. So the file has at most as many
// dead bytes as others.

#include <cstdint>
#include <optional>
#include <string>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/format.h"
#include "zip/engine/writing/entry_output.h"

namespace zip_engine {

class Transaction : public EntryOutput {
 public:
  // Opens an archive or an empty file to append to it. Returns false if it cannot be opened or is
  // neither.
  bool openExisting(const char* path);
  // Creates an empty file, or empties an existing one. Nothing is committed to the disk unless
  // makeDurable() follows: the file has no old state to protect.
  bool createNew(const char* path);
  void makeDurable() { durable_ = true; }

  // The archive before the append.
  const CentralDirectory& before() const { return before_; }
  // Absolute position that the offsets of the new archive count from.
  std::uint64_t base() const { return base_; }

  // Prepares for moveToStart(), if there is an archive. Called before anything is appended.
  void beginPastEnd();
  // Writes the buffer to the file.
  bool flushIfLarge() override;
  bool patch(std::uint64_t position, const void* data, std::size_t size) override;

  // Ends the archive with a directory of the kept and the added records. Once it returns true the
  // append survives a power failure, unless the file was created and is not durable; that one is
  // closed. On failure, rewind() or restore() follows.
  bool commit(const Bytes& kept, const Bytes& added, std::uint64_t entryCount,
              const std::string& comment);
  // Moves the committed entries to the start of the file, over the bytes of the old ones, of which
  // none may be left. `records` is their directory, with the present offsets. Does nothing without
  // beginPastEnd(), or if they do not fit there. On failure the archive is what commit() wrote.
  void moveToStart(Bytes records, std::uint64_t entryCount, const std::string& comment);
  // Restores the file byte for byte.
  void restore();

 private:
  bool flush();
  bool isBackedUp() const;
  bool backUp(std::uint64_t distance);
  std::optional<std::uint64_t> writeBackup(std::uint64_t end);
  bool sync();
  bool copyToStart(std::uint64_t position, std::uint64_t size);

  ArchiveFile file_;
  bool durable_ = false;
  CentralDirectory before_;
  Bytes beforeTail_;  // the old bytes after the directory, if that is overwritten
  std::uint64_t beforeSize_ = 0;
  std::uint64_t base_ = 0;
  std::uint64_t start_ = 0;              // absolute; where appended bytes begin
  bool touched_ = false;                 // true if the file has been changed
  std::optional<std::uint64_t> backup_;  // absolute; the backup directory
  std::uint64_t firstEntry_ = 0;         // absolute; after beginPastEnd(), else 0
  std::uint64_t directory_ = 0;          // absolute; the committed directory
};

}  // namespace zip_engine
