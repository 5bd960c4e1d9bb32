#include "platform/linux/trees/copy_content.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>

namespace platform::native {
namespace {

// Below this size a read and a write cost less than the kernel's own copy.
constexpr std::size_t kSmall = 16 << 10;
constexpr std::size_t kBlock = 1 << 20;
constexpr std::size_t kLargestCopy = std::size_t{1} << 30;
constexpr off_t kToTheEnd = std::numeric_limits<off_t>::max();

// Reports the progress of a copy.
class Meter {
 public:
  explicit Meter(const CopyProgress& progress) : progress_(progress) {}

  // The most bytes that one call of the kernel copies.
  std::size_t step() const { return progress_ ? kBlock : kLargestCopy; }
  // Sets how many bytes are copied. False, with errno, if the copy is to end.
  bool moveTo(off_t position) {
    position_ = position;
    return tell();
  }
  bool advance(ssize_t count) { return moveTo(position_ + count); }

 private:
  bool tell() const {
    if (!progress_ || progress_(static_cast<std::uint64_t>(position_))) return true;
    errno = ECANCELED;
    return false;
  }

  const CopyProgress& progress_;
  off_t position_ = 0;
};

std::size_t sizeWithin(off_t limit, std::size_t size) {
  return static_cast<std::size_t>(std::min(limit, static_cast<off_t>(size)));
}

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t count = ::write(descriptor, bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

// Distinguishes an error of the disk that is read from one of the disk that is written.
bool failReading() {
  if (errno == EIO) errno = EBADMSG;
  return false;
}

// Copies `left` bytes, fewer at the end of the file, and sets `left` to the rest.
bool copyBlocks(int from, int to, std::size_t blockSize, off_t& left, Meter& meter) {
  const std::unique_ptr<char[]> block(new char[blockSize]);  // not zero-filled
  while (left > 0) {
    const ssize_t count = ::read(from, block.get(), sizeWithin(left, blockSize));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failReading();
    if (count == 0) return true;
    if (!writeAll(to, block.get(), static_cast<std::size_t>(count))) return false;
    left -= count;
    if (!meter.advance(count)) return false;
  }
  return true;
}

// A read that returns the expected bytes, and no more, has reached the end.
bool copySmall(int from, int to, off_t size, Meter& meter) {
  char block[kSmall];
  const ssize_t count = ::read(from, block, sizeof(block));
  if (count < 0) return failReading();
  if (!writeAll(to, block, static_cast<std::size_t>(count))) return false;
  if (!meter.advance(count)) return false;
  off_t left = kToTheEnd;
  return count == size || copyBlocks(from, to, kBlock, left, meter);
}

// Does the work of copyBlocks() in the kernel where that is possible.
bool copyLarge(int from, int to, off_t& left, Meter& meter) {
  while (left > 0) {
    const ssize_t count =
        copy_file_range(from, nullptr, to, nullptr, sizeWithin(left, meter.step()), 0);
    if (count > 0) left -= count;
    if (count > 0 && !meter.advance(count)) return false;
    if (count > 0 || (count < 0 && errno == EINTR)) continue;
    // Blocks do the rest if the kernel cannot copy, or reports the end: files
    // whose size is not known in advance end at once for it.
    if (count < 0 && (errno == ENOSPC || errno == EFBIG || errno == EDQUOT)) return false;
    return copyBlocks(from, to, kBlock, left, meter);
  }
  return true;
}

bool copyToEnd(int from, int to, Meter& meter) {
  off_t left = kToTheEnd;
  return copyLarge(from, to, left, meter);
}

// Makes `to`, which ends before `position`, as long as a source with nothing but a
// hole from there on. A file that grows meanwhile gets its size before its content,
// so the hole must still be one after the size was read.
bool copyLastHole(int from, off_t position, int to, bool& isDone) {
  const off_t end = lseek(from, 0, SEEK_END);
  if (end < 0) return false;
  isDone = lseek(from, position, SEEK_DATA) < 0;
  if (isDone && errno != ENXIO) return false;
  return !isDone || end <= position || ftruncate(to, end) == 0;
}

// Copies the extents between the holes to a new file. Bytes that are written into
// a hole meanwhile are copied or not, as with any other way to read the file. A file
// system that cannot find holes is read as a whole.
bool copyExtents(int from, int to, Meter& meter) {
  for (off_t position = 0;;) {
    const off_t start = lseek(from, position, SEEK_DATA);
    if (start < 0 && errno == EINVAL && position == 0) return copyToEnd(from, to, meter);
    if (start < 0 && errno != ENXIO) return false;
    if (start < 0) {
      bool isDone = false;
      if (!copyLastHole(from, position, to, isDone)) return false;
      if (isDone) return meter.moveTo(lseek(to, 0, SEEK_END));
      continue;
    }
    const off_t end = lseek(from, start, SEEK_HOLE);
    if (end < 0 && errno != ENXIO) return false;
    if (end < 0) continue;  // it was truncated meanwhile, and has no more data
    off_t left = end - start;
    if (lseek(from, start, SEEK_SET) < 0 || lseek(to, start, SEEK_SET) < 0 ||
        !meter.moveTo(start) || !copyLarge(from, to, left, meter)) {
      return false;
    }
    if (left > 0) return true;  // it was truncated meanwhile, and ends here
    position = end;
  }
}

// Compressed files have few blocks, too, but no holes; one extent costs them little.
bool hasHoles(const struct stat& source) {
  constexpr off_t kBlockUnit = 512;
  return source.st_blocks < source.st_size / kBlockUnit;
}

}  // namespace

bool copyBytes(int from, off_t size, int to, const CopyProgress& progress) {
  Meter meter(progress);
  if (size < static_cast<off_t>(kSmall)) return copySmall(from, to, size, meter);
  return copyToEnd(from, to, meter);
}

bool copyContent(int from, const struct stat& source, int to, const CopyProgress& progress) {
  const off_t size = source.st_size;
  Meter meter(progress);
  if (size < static_cast<off_t>(kSmall)) return copySmall(from, to, size, meter);
  if (ioctl(to, FICLONE, from) == 0) return meter.moveTo(size);
  return hasHoles(source) ? copyExtents(from, to, meter) : copyToEnd(from, to, meter);
}

}  // namespace platform::native
