#pragma once
// A system in which a known amount waits for being written to a disk, whatever other programs do.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace support {

// Opens a file as `openat` does, and instead of the state of the system's memory one in which so
// many KiB are not written yet.
inline int openOnIdleSystem(int folder, const char* path, int flags, mode_t mode,
                            int unwritten = 0) {
  if (std::string_view(path) != "/proc/meminfo") {
    return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
  }
  const std::string state = "Dirty:   " + std::to_string(unwritten) + " kB\nWriteback:   0 kB\n";
  const int file = memfd_create("meminfo", MFD_CLOEXEC);
  if (syscall(SYS_pwrite64, file, state.data(), state.size(), 0) < 0) return -1;
  return file;
}

}  // namespace support
