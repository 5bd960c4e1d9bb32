#pragma once
// Reading small consecutive pieces of a file in few calls.

#include "zip/engine/container/archive_file.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

class ReadAhead {
 public:
  // Reads as ArchiveFile::readAt. A small piece that begins within or shortly after the piece
  // before loads a window of the bytes from there on, from which the next pieces are copied.
  bool readAt(const ArchiveFile& file, std::uint64_t position, unsigned char* buffer,
              std::size_t size);

 private:
  bool holds(std::uint64_t position, std::size_t size) const;
  void fill(const ArchiveFile& file, std::uint64_t position);

  std::uint64_t lastStart_ = 0;
  std::uint64_t lastEnd_ = 0;
  std::uint64_t windowStart_ = 0;
  Bytes window_;
};

}  // namespace zip_engine
