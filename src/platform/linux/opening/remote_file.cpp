#include "platform/linux/opening/remote_file.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>

namespace platform::native {
namespace {

constexpr std::uint32_t kCifs = 0xFF534D42;
constexpr std::uint32_t kSmb2 = 0xFE534D42;

std::optional<std::uint32_t> fileSystemOf(int descriptor) {
  struct statfs system;
  if (fstatfs(descriptor, &system) != 0) return std::nullopt;
  return static_cast<std::uint32_t>(system.f_type);
}

// Flags that change nothing for a regular file which exists. O_NONBLOCK is not among them: every
// file is opened with it first, and never a second time.
int anyHarmlessFlags() {
  thread_local std::minstd_rand random{std::random_device{}()};
  const auto bits = random();
  return ((bits & 0x100) != 0 ? O_NOCTTY : 0) | ((bits & 0x200) != 0 ? O_EXCL : 0) |
         ((bits & 0x400) != 0 ? O_ASYNC : 0);
}

}  // namespace

bool mayBeRemote(const struct stat& status) { return major(status.st_dev) == 0; }

bool isRemoteFile(int descriptor) {
  const std::optional<std::uint32_t> system = fileSystemOf(descriptor);
  if (!system) return true;
  switch (*system) {
    case kCifs:
    case kSmb2:
    case 0x6969:      // NFS
    case 0x01021997:  // 9P
    case 0x65735546:  // FUSE
    case 0x5346414F:  // AFS
    case 0x6B414653:  // AFS, the kernel's own
    case 0x00C36400:  // Ceph
    case 0x73757245:  // Coda
    case 0x564C:      // NetWare
      return true;
    default:
      return false;
  }
}

// The client compares the flags with those of the latest opening only. That is this one's, or one
// that it was joined with.
void openApart(Descriptor& file) {
  const std::optional<std::uint32_t> system = fileSystemOf(file.get());
  if (system != kCifs && system != kSmb2) return;
  const int flags = fcntl(file.get(), F_GETFL) & (O_ACCMODE | O_APPEND);
  const std::string name = "/proc/self/fd/" + std::to_string(file.get());
  Descriptor apart(::open(name.c_str(), flags | O_CLOEXEC | anyHarmlessFlags()));
  if (apart) file = std::move(apart);
}

}  // namespace platform::native
