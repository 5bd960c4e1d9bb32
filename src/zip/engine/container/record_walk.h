#pragma once
// Taking the records of a central directory one after the other.

#include <cstddef>
#include <cstdint>

#include "zip/engine/container/central_directory.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

// Returns the size of the record at the start of the bytes that are known of a directory, or 0 if
// there is no whole record.
inline std::size_t recordSize(const unsigned char* bytes, std::size_t known) {
  if (known < kCentralSize || load32(bytes) != kCentralSignature) return 0;
  const std::size_t size = CentralRecord{.bytes = bytes}.size();
  return size <= known ? size : 0;
}

class RecordWalk {
 public:
  // Takes the record at the start of the bytes. Returns what recordSize() does.
  std::size_t take(const unsigned char* bytes, std::size_t known) {
    const std::size_t size = recordSize(bytes, known);
    if (size != 0) {
      ++count_;
      checkOrder(bytes);
    }
    return size;
  }

  std::uint64_t count() const { return count_; }
  // The entries are in the file in the order of their records, and by their records no one reaches
  // the next one. False if a record has a zip64 field.
  bool isInOrder() const { return isInOrder_; }

 private:
  void checkOrder(const unsigned char* bytes) {
    const std::uint32_t start = load32(bytes + 42);
    const std::uint32_t compressedSize = load32(bytes + 20);
    const bool isPlain = start != kSaturated32 && compressedSize != kSaturated32;
    isInOrder_ = isInOrder_ && isPlain && start >= reached_;
    reached_ = std::uint64_t{start} + kLocalSize + compressedSize;
  }

  std::uint64_t count_ = 0;
  bool isInOrder_ = true;
  std::uint64_t reached_ = 0;
};

}  // namespace zip_engine
