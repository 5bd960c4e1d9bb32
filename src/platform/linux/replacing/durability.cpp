#include "platform/linux/replacing/durability.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/descriptor.h"

namespace platform::native {
namespace {

// Content that takes a disk about as long as the commit of one file.
constexpr std::uint64_t kBytesPerCommit = std::uint64_t{512} << 10;

// Reports whether no more than so many bytes of all files wait for being written to a disk. False if
// that is not known.
bool isLittleUnwritten(std::uint64_t most) {
  const Descriptor file(::open("/proc/meminfo", O_RDONLY | O_CLOEXEC));
  char text[4096];
  const ssize_t size = file ? ::read(file.get(), text, sizeof(text)) : -1;
  if (size <= 0) return false;
  const std::string lines(text, static_cast<std::size_t>(size));
  std::uint64_t bytes = 0;
  // The numbers are in KiB.
  for (const std::string name : {"Dirty:", "Writeback:"}) {
    const std::size_t at = lines.find(name);
    if (at == std::string::npos) return false;
    bytes += std::strtoull(lines.c_str() + at + name.size(), nullptr, 10) << 10;
  }
  return bytes <= most;
}

// Reports whether all of the file has been written without an error. The files that syncfs() has
// passed over, and older kernels whose syncfs() reports no error, show here.
bool isWritten(int descriptor) {
  return sync_file_range(
             descriptor, 0, 0,
             SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER) == 0;
}

}  // namespace

bool commitContent(int descriptor) {
  // Some file systems have nothing to commit and report that as EINVAL.
  return fdatasync(descriptor) == 0 || errno == EINVAL;
}

// Others, such as those in user space, need not pass syncfs() on to the disk.
bool canCommitTogether(int descriptor) {
  struct statfs system;
  if (fstatfs(descriptor, &system) != 0) return false;
  switch (static_cast<std::uint32_t>(system.f_type)) {
    case EXT4_SUPER_MAGIC:
    case XFS_SUPER_MAGIC:
    case BTRFS_SUPER_MAGIC:
    case F2FS_SUPER_MAGIC:
    case OVERLAYFS_SUPER_MAGIC:
    case TMPFS_MAGIC:
      return true;
    default:
      return false;
  }
}

// Not every syncfs() empties the cache of the disk. The commit of a file does, for all files.
bool commitTogether(const std::vector<int>& descriptors) {
  return isLittleUnwritten(descriptors.size() * kBytesPerCommit) &&
         syncfs(descriptors.back()) == 0 &&
         std::all_of(descriptors.begin(), descriptors.end(), isWritten) &&
         commitContent(descriptors.back());
}

void commitNameOf(const char* path) {
  const Descriptor opened(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened) fsync(opened.get());
}

}  // namespace platform::native
