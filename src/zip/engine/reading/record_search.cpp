#include "zip/engine/reading/record_search.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "zip/engine/container/end_record.h"
#include "zip/engine/container/entry_name.h"
#include "zip/engine/container/record_walk.h"

namespace zip_engine {
namespace {

// Between the signatures of two shorter records no sector of 512 bytes fits, so none is missing.
constexpr std::size_t kLongRecord = 512;

// A part of a file that moves from one position to a later one. No byte is read twice.
class Window {
 public:
  Window(const ArchiveFile& file, std::uint64_t position, std::uint64_t size)
      : file_(file),
        next_(position),
        end_(position + size),
        capacity_(static_cast<std::size_t>(std::min<std::uint64_t>(size, kLargest))),
        buffer_(new unsigned char[capacity_]) {}

  const unsigned char* bytes() const { return buffer_.get() + begin_; }
  std::size_t size() const { return size_; }
  bool isAtEnd() const { return next_ == end_; }
  void drop(std::size_t count) {
    begin_ += count;
    size_ -= count;
  }
  // Reads as much as there is room for after the bytes that were not dropped. Returns false if there
  // is no room, or on failure.
  bool extend() {
    std::memmove(buffer_.get(), bytes(), size_);
    begin_ = 0;
    const std::size_t count =
        static_cast<std::size_t>(std::min<std::uint64_t>(end_ - next_, capacity_ - size_));
    if (count == 0 || !file_.readAt(next_, buffer_.get() + size_, count)) return false;
    next_ += count;
    size_ += count;
    return true;
  }

 private:
  // Fits into the first cache, where the walk from record to record waits least.
  static constexpr std::size_t kLargest = 32 << 10;

  const ArchiveFile& file_;
  std::uint64_t next_;  // the position of the first byte that was not read
  std::uint64_t end_;
  std::size_t capacity_;
  std::unique_ptr<unsigned char[]> buffer_;
  std::size_t begin_ = 0;
  std::size_t size_ = 0;
};

// The last record that matched, and the one after it.
class Match {
 public:
  explicit Match(Bytes& bytes) : bytes_(bytes) {}
  void take(const CentralRecord& record, bool matches) {
    if (matches) bytes_.clear();
    if (matches || isNextWanted_) {
      bytes_.insert(bytes_.end(), record.bytes, record.bytes + record.size());
    }
    isNextWanted_ = matches;
  }

 private:
  Bytes& bytes_;
  bool isNextWanted_ = false;
};

// Reports whether the directory is where its offset says, and nothing is between it and the record.
bool hasNoPrefix(const EndRecord& end) {
  return end.directoryOffset <= end.directoryEnd &&
         end.directoryEnd - end.directoryOffset == end.directorySize;
}

// Reads the whole directory. Returns the number of its records, or nothing in doubt.
std::optional<std::uint64_t> searchRecords(const ArchiveFile& file, const EndRecord& end,
                                           std::string_view oemName, Bytes& found) {
  Window window(file, end.directoryOffset, end.directorySize);
  NameMatcher matcher(oemName);
  Match match(found);
  RecordWalk walk;
  while (!window.isAtEnd()) {
    if (!window.extend()) return std::nullopt;
    while (const std::size_t length = walk.take(window.bytes(), window.size())) {
      if (length >= kLongRecord || !walk.isInOrder()) return std::nullopt;
      const CentralRecord record{.bytes = window.bytes()};
      match.take(record, matcher.matches(record));
      window.drop(length);
    }
  }
  if (window.size() != 0) return std::nullopt;
  return walk.count();
}

}  // namespace

RecordSearch findRecord(const ArchiveFile& file, std::string_view oemName,
                        CentralDirectory& directory) {
  FilePiece tail;
  std::optional<EndRecord> end = readLastEndRecord(file, tail);
  if (!end || !hasNoPrefix(*end)) return RecordSearch::Undecided;
  directory = {};
  const auto count = searchRecords(file, *end, oemName, directory.blob);
  if (!count || !end->hasCount(*count)) return RecordSearch::Undecided;
  if (directory.blob.empty()) return RecordSearch::Missing;
  directory.entryCount = *count;
  directory.position = end->directoryOffset;
  directory.end = end->end;
  directory.comment = std::move(end->comment);
  directory.isInOrder = true;
  return RecordSearch::Found;
}

}  // namespace zip_engine
