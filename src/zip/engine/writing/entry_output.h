#pragma once
// What new entries are written to: an archive, or memory.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "zip/engine.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

// Gathers the bytes of entries in a buffer. An implementation says what becomes of it.
class EntryOutput {
 public:
  EntryOutput() = default;
  EntryOutput(const EntryOutput&) = delete;
  EntryOutput& operator=(const EntryOutput&) = delete;
  virtual ~EntryOutput() = default;

  // Absolute position of the next byte that is appended.
  std::uint64_t position() const { return flushed_ + buffer_.size(); }
  // The bytes since the last flush, to append to; flushIfLarge() follows.
  Bytes& buffer() { return buffer_; }
  // The same with the capacity for a part of a large entry, always of one size: a buffer that grows
  // holds its old memory beside the new one.
  Bytes& bufferForPart(std::size_t size) {
    buffer_.reserve(kBufferSize + size);
    return buffer_;
  }
  bool append(const void* data, std::size_t size) {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    buffer_.insert(buffer_.end(), bytes, bytes + size);
    return flushIfLarge();
  }
  // Flushes the buffer if it has grown. Its bytes are kept on failure.
  virtual bool flushIfLarge() = 0;
  // Replaces bytes that were appended with no flush between them.
  virtual bool patch(std::uint64_t position, const void* data, std::size_t size) {
    std::memcpy(buffer_.data() + (position - flushed_), data, size);
    return true;
  }
  // Undoes everything past a position that was reached before.
  void rewind(std::uint64_t position) {
    flushed_ = std::min(flushed_, position);
    buffer_.resize(static_cast<std::size_t>(position - flushed_));
  }

 protected:
  // Appended bytes are gathered up to this size.
  static constexpr std::size_t kBufferSize = 1 << 20;

  std::uint64_t flushed_ = 0;  // absolute; where the buffer begins
  Bytes buffer_;
};

// Keeps one entry at a time in memory. It has at most ZipLargestPrepared bytes of content, and so
// fewer than this limit with its header.
class MemoryOutput : public EntryOutput {
 public:
  bool flushIfLarge() override { return buffer_.size() <= kLimit; }

 private:
  static constexpr std::size_t kLimit = ZipLargestPrepared + (1 << 20);
};

}  // namespace zip_engine
