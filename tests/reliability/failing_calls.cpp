#include "failing_calls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

#include "recorded_calls.h"

namespace failing {
namespace {

bool armed = false;
Fault armedFault = Fault::OneCall;
int wanted = 0;
int calls = 0;
std::function<void()> interrupt;
std::string firstFailed;
std::atomic<int> threads = 0;

bool countsFor(const char* name, bool needsSpace) {
  if (armedFault == Fault::FullDisk) return needsSpace;
  return armedFault != Fault::HalfRead || std::strcmp(name, "read") == 0;
}

bool hits() {
  if (wanted == 0) return false;
  if (armedFault == Fault::OneCall) return calls == wanted;
  return armedFault == Fault::HalfRead ? calls == wanted + 1 : calls >= wanted;
}

// Reports whether this call fails. Sets errno if so.
bool fails(const char* name, const char* path, bool needsSpace) {
  if (!armed || !countsFor(name, needsSpace)) return false;
  ++calls;
  if (!hits()) return false;
  armed = false;  // the following calls are the test's own
  if (armedFault == Fault::Interruption) interrupt();
  if (firstFailed.empty()) firstFailed = std::string(name) + ' ' + (path != nullptr ? path : "");
  armed = true;
  if (armedFault == Fault::Interruption) return false;
  errno = armedFault == Fault::FullDisk ? ENOSPC : EIO;
  return true;
}

// The same for a call that transfers bytes. Where the next call is to fail, or the disk to be full,
// it transfers half of them.
bool fails(const char* name, const char* path, std::size_t& size) {
  const bool needsSpace = std::strcmp(name, "read") != 0;
  const bool halves = armedFault == Fault::FullDisk || armedFault == Fault::HalfRead;
  if (armed && halves && countsFor(name, needsSpace) && calls + 1 == wanted && size > 1) {
    ++calls;
    size /= 2;
    return false;
  }
  return fails(name, path, needsSpace);
}

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

Failing::Failing(Fault fault, int number, std::function<void()> interruption) {
  armedFault = fault;
  interrupt = std::move(interruption);
  wanted = number;
  calls = 0;
  firstFailed.clear();
  armed = true;
}
Failing::~Failing() { armed = false; }
int Failing::count() const { return calls; }
std::string Failing::failed() const { return firstFailed; }

int startedThreads() { return threads; }

}  // namespace failing

// Defines a function of the program that replaces one of the C library. It has another name in C++,
// because headers declare the real one in various ways.
#define INTERPOSED(result, name, parameters)                                                      \
  extern "C" __attribute__((visibility("default"))) result fake_##name parameters __asm__(#name); \
  extern "C" result fake_##name parameters

// `space` is the number of bytes that the call transfers, or whether it needs disk space.
#define PASSES_ON(result, name, parameters, arguments, failure, path, space) \
  INTERPOSED(result, name, parameters) {                                     \
    using Function = result(*) parameters;                                   \
    static const Function real = failing::next<Function>(#name);             \
    return failing::fails(#name, path, space) ? failure : real arguments;    \
  }

// A call that changes the disk. `record` runs after it has succeeded.
#define RECORDED(result, name, parameters, arguments, path, space, record) \
  INTERPOSED(result, name, parameters) {                                   \
    using Function = result(*) parameters;                                 \
    static const Function real = failing::next<Function>(#name);           \
    if (failing::fails(#name, path, space)) return -1;                     \
    const result done = real arguments;                                    \
    const int error = errno;                                               \
    if (done >= 0) recording::Recorder::record;                            \
    errno = error;                                                         \
    return done;                                                           \
  }

PASSES_ON(ssize_t, read, (int fd, void* buffer, std::size_t size), (fd, buffer, size), -1, nullptr,
          size)
PASSES_ON(ssize_t, pread, (int fd, void* buffer, std::size_t size, off_t at),
          (fd, buffer, size, at), -1, nullptr, false)
RECORDED(ssize_t, write, (int fd, const void* data, std::size_t size), (fd, data, size), nullptr,
         size, contentChanged(fd))
RECORDED(ssize_t, pwrite, (int fd, const void* data, std::size_t size, off_t at),
         (fd, data, size, at), nullptr, size, contentChanged(fd))
RECORDED(ssize_t, copy_file_range,
         (int from, off_t* fromAt, int to, off_t* toAt, std::size_t size, unsigned flags),
         (from, fromAt, to, toAt, size, flags), nullptr, size, contentChanged(to))
PASSES_ON(off_t, lseek, (int fd, off_t at, int whence), (fd, at, whence), -1, nullptr, false)
RECORDED(int, ftruncate, (int fd, off_t size), (fd, size), nullptr, false, contentChanged(fd))
RECORDED(int, fsync, (int fd), (fd), nullptr, false, fileCommitted(fd))
RECORDED(int, fdatasync, (int fd), (fd), nullptr, false, fileCommitted(fd))
PASSES_ON(int, fstat, (int fd, struct stat* status), (fd, status), -1, nullptr, false)
PASSES_ON(int, stat, (const char* path, struct stat* status), (path, status), -1, path, false)
PASSES_ON(int, lstat, (const char* path, struct stat* status), (path, status), -1, path, false)
PASSES_ON(int, statx,
          (int folder, const char* path, int flags, unsigned mask, struct statx* status),
          (folder, path, flags, mask, status), -1, path, false)
PASSES_ON(int, fchmod, (int fd, mode_t mode), (fd, mode), -1, nullptr, false)
PASSES_ON(int, chmod, (const char* path, mode_t mode), (path, mode), -1, path, false)
PASSES_ON(int, futimens, (int fd, const struct timespec* times), (fd, times), -1, nullptr, false)
RECORDED(int, linkat, (int from, const char* old, int to, const char* path, int flags),
         (from, old, to, path, flags), path, true, namesChanged())
RECORDED(int, rename, (const char* old, const char* path), (old, path), path, false, namesChanged())
RECORDED(int, renameat, (int from, const char* old, int to, const char* path),
         (from, old, to, path), path, false, namesChanged())
RECORDED(int, renameat2, (int from, const char* old, int to, const char* path, unsigned flags),
         (from, old, to, path, flags), path, false, namesChanged())
RECORDED(int, unlink, (const char* path), (path), path, false, namesChanged())
RECORDED(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags), path,
         false, namesChanged())
PASSES_ON(int, rmdir, (const char* path), (path), -1, path, false)
PASSES_ON(int, mkdir, (const char* path, mode_t mode), (path, mode), -1, path, true)
PASSES_ON(char*, realpath, (const char* path, char* real_path), (path, real_path), nullptr, path,
          false)
PASSES_ON(DIR*, opendir, (const char* path), (path), nullptr, path, false)
PASSES_ON(struct dirent*, readdir, (DIR * folder), (folder), nullptr, nullptr, false)

namespace {

bool creates(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

int openAndRecord(const char* name, int folder, const char* path, int flags, mode_t mode) {
  if (failing::fails(name, path, creates(flags))) return -1;
  const bool isNew =
      creates(flags) && ((flags & O_CREAT) == 0 || faccessat(folder, path, F_OK, 0) != 0);
  const int descriptor = static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
  const int error = errno;
  if (descriptor >= 0 && isNew) recording::Recorder::fileCreated(descriptor);
  if (descriptor >= 0 && (flags & O_TRUNC) != 0) recording::Recorder::contentChanged(descriptor);
  errno = error;
  return descriptor;
}

}  // namespace

// The last argument of the following functions may be missing. It is in a register then as well,
// and the kernel does not read it.

INTERPOSED(int, open, (const char* path, int flags, mode_t mode)) {
  return openAndRecord("open", AT_FDCWD, path, flags, mode);
}

INTERPOSED(int, openat, (int folder, const char* path, int flags, mode_t mode)) {
  return openAndRecord("openat", folder, path, flags, mode);
}

INTERPOSED(int, fcntl, (int fd, int command, void* argument)) {
  if (failing::fails("fcntl", nullptr, false)) return -1;
  return static_cast<int>(syscall(SYS_fcntl, fd, command, argument));
}

INTERPOSED(int, ioctl, (int fd, unsigned long request, void* argument)) {
  if (failing::fails("ioctl", nullptr, true)) return -1;
  const int result = static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
  if (result == 0 && request == FICLONE) recording::Recorder::contentChanged(fd);
  return result;
}

INTERPOSED(int, pthread_create,
           (pthread_t * thread, const pthread_attr_t* attributes, void* (*work)(void*),
            void* argument)) {
  static const auto real = failing::next<decltype(&fake_pthread_create)>("pthread_create");
  ++failing::threads;
  return real(thread, attributes, work, argument);
}

// A close that fails has closed the descriptor nevertheless.
INTERPOSED(int, close, (int fd)) {
  const int result = static_cast<int>(syscall(SYS_close, fd));
  return failing::fails("close", nullptr, false) ? -1 : result;
}
