#pragma once
// A system in which nothing waits for being written to a disk, whatever other programs do.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string_view>

namespace support {

// Opens a file as `openat` does, and instead of the state of the system's memory that of an idle
// system.
inline int openOnIdleSystem(int folder, const char* path, int flags, mode_t mode) {
  constexpr std::string_view kIdle = "Dirty:   0 kB\nWriteback:   0 kB\n";
  if (std::string_view(path) != "/proc/meminfo") {
    return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
  }
  const int file = memfd_create("meminfo", MFD_CLOEXEC);
  if (syscall(SYS_pwrite64, file, kIdle.data(), kIdle.size(), 0) < 0) return -1;
  return file;
}

}  // namespace support
