#include "platform/linux/copy_content.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace platform::native {
namespace {

// Below this size a read and a write cost less than the kernel's own copy.
constexpr std::size_t kSmall = 16 << 10;
constexpr std::size_t kBlock = 1 << 20;

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

bool copyBlocks(int from, int to, std::size_t blockSize) {
  const auto block = std::make_unique_for_overwrite<char[]>(blockSize);
  for (;;) {
    const ssize_t count = ::read(from, block.get(), blockSize);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) return true;
    if (!writeAll(to, block.get(), static_cast<std::size_t>(count))) return false;
  }
}

// A read that returns the expected bytes, and no more, has reached the end.
bool copySmall(int from, int to, off_t size) {
  char block[kSmall];
  const ssize_t count = ::read(from, block, sizeof(block));
  if (count < 0 || !writeAll(to, block, static_cast<std::size_t>(count))) return false;
  return count == size || copyBlocks(from, to, kBlock);
}

}  // namespace

bool copyBytes(int from, off_t size, int to) {
  if (size < static_cast<off_t>(kSmall)) return copySmall(from, to, size);
  for (;;) {
    const ssize_t count = copy_file_range(from, nullptr, to, nullptr, std::size_t{1} << 30, 0);
    if (count > 0 || (count < 0 && errno == EINTR)) continue;
    // Blocks do the rest if the kernel cannot copy, or reports the end: files
    // whose size is not known in advance end at once for it.
    if (count < 0 && (errno == ENOSPC || errno == EFBIG || errno == EDQUOT)) return false;
    return copyBlocks(from, to, kBlock);
  }
}

bool copyContent(int from, off_t size, int to) {
  const bool isCloned = size >= static_cast<off_t>(kSmall) && ioctl(to, FICLONE, from) == 0;
  return isCloned || copyBytes(from, size, to);
}

}  // namespace platform::native
