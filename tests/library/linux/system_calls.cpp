#include "library/linux/system_calls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace {

using namespace system_calls;

void note(const std::string& call) { record += (record.empty() ? "" : " ") + call; }

// Returns true, with errno, for the call that fails.
bool fails(int& number) {
  if (number == 0 || --number != 0) return false;
  errno = EIO;
  return true;
}

}  // namespace

// The library calls these instead of the C library's. They have other names in C++
// because headers may define the real ones inline.
#define INTERPOSED(result, name, parameters)                                                    \
  extern "C" __attribute__((visibility("default"))) result my_##name parameters __asm__(#name); \
  extern "C" result my_##name parameters

INTERPOSED(ssize_t, write, (int file, const void* data, std::size_t size)) {
  note('w' + std::to_string(size));
  return fails(failingWrite) ? -1 : syscall(SYS_write, file, data, size);
}

INTERPOSED(ssize_t, read, (int file, void* data, std::size_t size)) {
  return fails(failingRead) ? -1 : syscall(SYS_read, file, data, size);
}

INTERPOSED(int, fdatasync, (int file)) {
  note("c");
  return static_cast<int>(syscall(SYS_fdatasync, file));
}

INTERPOSED(int, mkdir, (const char* path, mode_t mode)) {
  if (std::exchange(isCreatedBefore, false)) syscall(SYS_mkdirat, AT_FDCWD, path, mode);
  return static_cast<int>(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}
