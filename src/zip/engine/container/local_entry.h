#pragma once
// An entry's local header and the position of its data, checked against the central directory.

#include <cstdint>

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/format.h"
#include "zip/engine/container/local_header.h"
#include "zip/engine/reading/entry_map.h"
#include "zip/engine/reading/read_ahead.h"

namespace zip_engine {

class LocalEntry {
 public:
  // Reads the local header of a record, and the data of a small entry with it. Returns false if the
  // entry lies outside the archive or overlaps another one, or if the header belongs to another
  // entry.
  bool read(const ArchiveFile& file, const CentralDirectory& directory,
            const CentralRecord& record);

  // Of the last read() that returned true.
  std::uint64_t dataPosition() const { return start_ + header().size(); }
  const unsigned char* extra() const { return header().extra(); }
  std::size_t extraSize() const { return header().extraLength(); }
  // The bytes after the header that were read with it.
  const unsigned char* prefetched() const { return head_.data() + header().size(); }
  std::size_t prefetchedSize() const { return head_.size() - header().size(); }
  // Reports whether the header agrees with the record in sizes and CRC, or leaves them to it.
  // Programs differ in which of the two they use.
  bool hasSumsOf(const CentralRecord& record) const;

  // Reads bytes of the archive, in few calls if they follow each other.
  bool readBytes(const ArchiveFile& file, std::uint64_t position, unsigned char* buffer,
                 std::size_t size) {
    return readAhead_.readAt(file, position, buffer, size);
  }

 private:
  LocalHeader header() const { return {head_.data()}; }
  bool extendHead(const ArchiveFile& file, std::size_t size);

  EntryMap map_;
  ReadAhead readAhead_;
  std::uint64_t start_ = 0;  // absolute
  Bytes head_;               // the header and the bytes read with it
};

}  // namespace zip_engine
