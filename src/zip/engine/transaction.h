#pragma once
// Appending to an archive in place so that at every instant the file is whole:
// as it was before, or as it is after the commit.
//
// Before a byte of the old directory is overwritten, a copy of it, with an end
// record of its own, stands behind the place where the finished file will end:
// the guard. New entries and the new directory are written in front of it, and
// cutting the guard off is the commit.

#include <cstdint>
#include <string>

#include "zip/engine/archive_file.h"
#include "zip/engine/central_directory.h"
#include "zip/engine/format.h"

namespace zip_engine {

class Transaction {
 public:
  // Opens the archive for an append, or makes a new one of what is there. False
  // if the file cannot be opened or is neither an archive nor empty.
  bool openExisting(const char* path);
  bool createNew(const char* path);

  // The archive as it was.
  const CentralDirectory& before() const { return before_; }

  // Absolute position of the next byte that is appended.
  std::uint64_t position() const { return flushed_ + buffer_.size(); }
  // The bytes behind the last flush, to append to; flushIfLarge() follows.
  Bytes& buffer() { return buffer_; }
  // The same with room for a part of a large entry, always of the same size: a
  // buffer that grows holds its old room beside the new one.
  Bytes& bufferForPart(std::size_t size);
  bool append(const void* data, std::size_t size);
  // Writes the buffer out when it has grown. After a failure its bytes are kept.
  bool flushIfLarge();
  // Replaces bytes that were appended.
  bool patch(std::uint64_t position, const void* data, std::size_t size);
  // Takes back everything behind a position that was reached before.
  void rewind(std::uint64_t position);

  // Ends the archive with a directory of the records that are kept and those that
  // are added, and cuts off what is behind it.
  bool commit(const Bytes& kept, const Bytes& added, std::uint64_t entryCount,
              const std::string& comment);
  // Makes the file byte for byte what it was.
  void restore();

 private:
  bool flush(std::uint64_t roomBehind);
  bool guard(std::uint64_t end);
  bool placeGuard(std::uint64_t end);

  ArchiveFile file_;
  CentralDirectory before_;
  Bytes beforeTail_;  // what was overwritten first: directory and end
  std::uint64_t beforeSize_ = 0;
  std::uint64_t start_ = 0;    // absolute; where appended bytes begin
  std::uint64_t flushed_ = 0;  // absolute; where the buffer begins
  Bytes buffer_;
  bool touched_ = false;             // whether the file differs from what it was
  std::uint64_t safeDirectory_ = 0;  // absolute; a whole copy of the old directory
  std::uint64_t guardStart_ = 0;     // absolute; 0 without a guard
};

}  // namespace zip_engine
