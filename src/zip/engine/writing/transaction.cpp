#include "zip/engine/writing/transaction.h"

#include <algorithm>
#include <optional>

#include "zip/engine/container/end_record.h"
#include "zip/engine/reading/interrupted_append.h"

namespace zip_engine {
namespace {

// How far past a write the backup directory is put while more is to come.
constexpr std::uint64_t kBackupDistance = 16 << 20;

// A write within one page of the page cache is there entirely or not at all after a kill.
constexpr std::uint64_t kPage = 4096;

// A gap between the old directory and the end of the file up to this size is overwritten with it; a
// larger one is left unchanged.
constexpr std::uint64_t kLargestGap = 1 << 20;

// Moves the entries of central records that appendCentralRecord wrote. An offset that was written
// in 64 bits stays there, as the last value of the first extra block.
void moveOffsets(Bytes& records, std::uint64_t distance) {
  constexpr std::size_t kOffset = 42;
  for (std::size_t at = 0; at < records.size();) {
    unsigned char* const record = records.data() + at;
    const std::uint16_t nameLength = load16(record + 28);
    const std::uint32_t near = load32(record + kOffset);
    if (near == kSaturated32) {
      unsigned char* const block = record + kCentralSize + nameLength;
      unsigned char* const far = block + 4 + load16(block + 2) - 8;
      store64(far, load64(far) - distance);
    } else {
      store32(record + kOffset, static_cast<std::uint32_t>(near - distance));
    }
    at += kCentralSize + nameLength + load16(record + 30) + load16(record + 32);
  }
}

// Returns the start of the first page past a position.
std::uint64_t nextPage(std::uint64_t position) { return (position / kPage + 1) * kPage; }

}  // namespace

bool Transaction::createNew(const char* path) {
  // CREATE_ALWAYS is refused for a hidden file.
  if (!file_.open(path, GENERIC_READ | GENERIC_WRITE, 0, OPEN_ALWAYS)) return false;
  // ext4 writes a file that was truncated to the disk when it is closed, also one that was empty.
  return file_.size() == std::uint64_t{0} || file_.truncate(0);
}

bool Transaction::openExisting(const char* path) {
  if (!file_.open(path, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING)) return false;
  durable_ = true;
  const std::optional<std::uint64_t> size = file_.size();
  if (!size) return false;
  beforeSize_ = *size;
  if (beforeSize_ == 0) return true;
  if (!readCentralDirectory(file_, before_)) return false;
  const std::uint64_t directoryEnd = before_.position + before_.blob.size();
  const std::uint64_t gap = beforeSize_ - directoryEnd;
  const bool isKept = gap > kLargestGap;
  start_ = isKept ? beforeSize_ : before_.position;
  flushed_ = start_;
  base_ = before_.base;
  if (isKept) return true;
  beforeTail_.resize(static_cast<std::size_t>(gap));
  return file_.readAt(directoryEnd, beforeTail_.data(), beforeTail_.size());
}

// The page that moveToStart() ends in must not be that of the first entry: the truncation zeroes
// the rest of it, and that may reach the disk before the new size. A file that is no longer than
// the old one ends before that page.
void Transaction::beginPastEnd() {
  if (beforeSize_ == 0) return;
  beforeTail_.clear();
  start_ = beforeSize_;
  flushed_ = start_;
  firstEntry_ = nextPage(start_);
  buffer_.assign(static_cast<std::size_t>(firstEntry_ - start_), 0);
  // Bytes before the old archive are dead, too.
  base_ = 0;
}

bool Transaction::flushIfLarge() {
  if (buffer_.size() < kBufferSize) return true;
  // A disk that is nearly full may have space for a backup that is nearer.
  return (isBackedUp() || backUp(kBackupDistance) || backUp(kBufferSize)) && flush();
}

bool Transaction::flush() {
  touched_ = true;
  if (!file_.writeAt(flushed_, buffer_.data(), buffer_.size())) return false;
  flushed_ += buffer_.size();
  buffer_.clear();
  return true;
}

// Reports whether the backup directory is past the buffer.
bool Transaction::isBackedUp() const { return backup_ && position() <= *backup_; }

// Puts a backup directory so many bytes past the buffer or, if the file is longer, past its end.
bool Transaction::backUp(std::uint64_t distance) {
  const std::optional<std::uint64_t> size = file_.size();
  if (!size) return false;
  touched_ = true;
  const std::optional<std::uint64_t> copy = writeBackup(std::max(position() + distance, *size));
  if (copy && sync()) {
    backup_ = copy;
    return true;
  }
  // An incomplete one must not hide the end record before it.
  file_.truncate(*size);
  return false;
}

// Returns the position of the backup directory.
//
// The backup shares no page with the bytes before `end`: the truncation that commits the append
// zeroes the rest of its last page, and that may reach the disk before the new size.
std::optional<std::uint64_t> Transaction::writeBackup(std::uint64_t end) {
  const auto endRecordsFor = [&](std::uint64_t directory, bool withEnd64 = false) {
    Bytes bytes;
    appendEndRecords(bytes, directory - before_.base, before_.blob.size(), before_.entryCount,
                     before_.comment, withEnd64);
    return bytes;
  };
  const auto ifWritten = [](bool written, std::uint64_t copy) {
    return written ? std::optional(copy) : std::nullopt;
  };
  const Bytes whenSmall = endRecordsFor(nextPage(end));
  if (before_.blob.size() + whenSmall.size() <= kPage) {
    Bytes whole = before_.blob;
    whole.insert(whole.end(), whenSmall.begin(), whenSmall.end());
    return ifWritten(file_.writeAt(nextPage(end), whole.data(), whole.size()), nextPage(end));
  }
  // First an end record that refers to the directory that is there, then the copy, then the end
  // record that refers to the copy, so that a kill between two of them leaves a sound end record.
  // Both have one size: the first one has the zip64 records if the last one needs them.
  const std::uint64_t endRecord = nextPage(nextPage(end) + before_.blob.size());
  const std::uint64_t copy = endRecord - before_.blob.size();
  const std::uint64_t present = backup_.value_or(before_.position);
  const Bytes near = endRecordsFor(copy);
  const bool isFar = needsEnd64(copy - before_.base, before_.blob.size(), before_.entryCount);
  const Bytes far = endRecordsFor(present, isFar);
  if (!file_.writeAt(endRecord, far.data(), far.size())) return std::nullopt;
  // After a power failure the end record of the archive is not searched farther back than that.
  const bool isReachable = endRecord + far.size() - present <= kLongestInterruption;
  const auto inOrder = [&] { return isReachable || sync(); };
  return ifWritten(inOrder() && file_.writeAt(copy, before_.blob.data(), before_.blob.size()) &&
                       inOrder() && file_.writeAt(endRecord, near.data(), near.size()),
                   copy);
}

bool Transaction::sync() { return !durable_ || file_.sync(); }

bool Transaction::patch(std::uint64_t position, const void* data, std::size_t size) {
  return position < flushed_ ? file_.writeAt(position, data, size)
                             : EntryOutput::patch(position, data, size);
}

bool Transaction::commit(const Bytes& kept, const Bytes& added, std::uint64_t entryCount,
                         const std::string& comment) {
  directory_ = position();
  const std::size_t directorySize = kept.size() + added.size();
  Bytes endRecords;
  appendEndRecords(endRecords, directory_ - base_, directorySize, entryCount, comment);
  buffer_.reserve(buffer_.size() + directorySize + endRecords.size());
  buffer_.insert(buffer_.end(), kept.begin(), kept.end());
  buffer_.insert(buffer_.end(), added.begin(), added.end());
  buffer_.insert(buffer_.end(), endRecords.begin(), endRecords.end());
  // What was never an archive, and is written in one piece, needs no backup.
  const bool needsBackup = beforeSize_ != 0 || backup_;
  if (needsBackup && !isBackedUp() && !backUp(0)) return false;
  return flush() && sync() && (!backup_ || (file_.truncate(position()) && sync())) &&
         (durable_ || file_.close());
}

void Transaction::moveToStart(Bytes records, std::uint64_t entryCount, const std::string& comment) {
  if (firstEntry_ == 0) return;
  const std::uint64_t size = directory_ - firstEntry_;
  const std::size_t directorySize = records.size();
  moveOffsets(records, firstEntry_);
  appendEndRecords(records, size, directorySize, entryCount, comment);
  const std::uint64_t end = size + records.size();
  if (nextPage(end) > firstEntry_) return;
  // Whether the truncation has reached the disk makes no difference, so it is not committed.
  if (copyToStart(firstEntry_, size) && file_.writeAt(size, records.data(), records.size()) &&
      sync()) {
    file_.truncate(end);
  }
}

bool Transaction::copyToStart(std::uint64_t position, std::uint64_t size) {
  buffer_.resize(kBufferSize);
  for (std::uint64_t done = 0; done < size;) {
    const std::size_t count =
        static_cast<std::size_t>(std::min<std::uint64_t>(size - done, kBufferSize));
    if (!file_.readAt(position + done, buffer_.data(), count) ||
        !file_.writeAt(done, buffer_.data(), count)) {
      return false;
    }
    done += count;
  }
  return true;
}

void Transaction::restore() {
  if (!touched_) return;
  const std::uint64_t tail = beforeSize_ - beforeTail_.size();
  const bool isRestored =
      file_.writeAt(start_, before_.blob.data(), static_cast<std::size_t>(tail - start_)) &&
      file_.writeAt(tail, beforeTail_.data(), beforeTail_.size());
  // On failure the backup directory stays, and with it all entries.
  if (isRestored && sync()) file_.truncate(beforeSize_);
}

}  // namespace zip_engine
