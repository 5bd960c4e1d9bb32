#include "failing_calls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <type_traits>
#include <utility>

#include "recorded_calls.h"
#include "support/linux/idle_system.h"

namespace failing {
namespace {

// Only the calls of the thread that sets it are counted and fail.
thread_local bool armed = false;
Fault armedFault = Fault::OneCall;
int wanted = 0;
int calls = 0;
std::function<void()> interrupt;
std::string firstFailed;
std::string notes;
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

void note(const std::string& call) {
  if (armed) notes += (notes.empty() ? "" : " ") + call;
}

// Reports whether this call fails. Sets errno if so.
bool fails(const char* name, const char* path, bool needsSpace) {
  if (std::strcmp(name, "fdatasync") == 0) note("c");
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
  if (std::strcmp(name, "write") == 0) note('w' + std::to_string(size));
  const bool needsSpace = std::strcmp(name, "read") != 0;
  const bool halves = armed && (armedFault == Fault::FullDisk || armedFault == Fault::HalfRead);
  if (halves && countsFor(name, needsSpace) && calls + 1 == wanted && size > 1) {
    ++calls;
    size /= 2;
    return false;
  }
  return fails(name, path, needsSpace);
}

template <typename Result>
constexpr Result failure() {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return -1;
  }
}

// Returns the function that the program's one replaces: that of a sanitizer which is linked into the
// program, else of the library that comes next.
template <typename Function>
Function next(const char* name) {
  void* const watched = dlsym(RTLD_DEFAULT, ("__interceptor_" + std::string(name)).c_str());
  return reinterpret_cast<Function>(watched != nullptr ? watched : dlsym(RTLD_NEXT, name));
}

}  // namespace

Failing::Failing(Fault fault, int number, std::function<void()> interruption) {
  armedFault = fault;
  interrupt = std::move(interruption);
  wanted = number;
  calls = 0;
  firstFailed.clear();
  notes.clear();
  armed = true;
}
Failing::~Failing() { armed = false; }
int Failing::count() const { return calls; }
std::string Failing::failed() const { return firstFailed; }
std::string Failing::writesAndCommits() const { return notes; }

int startedThreads() { return threads; }

}  // namespace failing

// Defines a function of the program that replaces one of the C library. It has another name in C++,
// because headers declare the real one in various ways.
#define INTERPOSED(result, name, parameters)                                                      \
  extern "C" __attribute__((visibility("default"))) result fake_##name parameters __asm__(#name); \
  extern "C" result fake_##name parameters

// A call of the C library. `space` is the number of bytes that it transfers, or whether it needs
// disk space. `record` runs after the call has succeeded.
#define CALL(result, name, parameters, arguments, path, space, record) \
  INTERPOSED(result, name, parameters) {                               \
    using Function = decltype(&fake_##name);                           \
    static const Function real = failing::next<Function>(#name);       \
    constexpr auto kFailure = failing::failure<result>();              \
    if (failing::fails(#name, path, space)) return kFailure;           \
    const auto done = real arguments;                                  \
    const int error = errno;                                           \
    if (done != kFailure) {                                            \
      record;                                                          \
    }                                                                  \
    errno = error;                                                     \
    return done;                                                       \
  }

using recording::Recorder;

CALL(ssize_t, read, (int fd, void* buffer, std::size_t size), (fd, buffer, size), nullptr, size, {})
CALL(ssize_t, pread, (int fd, void* buffer, std::size_t size, off_t at), (fd, buffer, size, at),
     nullptr, false, {})
CALL(ssize_t, write, (int fd, const void* data, std::size_t size), (fd, data, size), nullptr, size,
     Recorder::contentChanged(fd))
CALL(ssize_t, pwrite, (int fd, const void* data, std::size_t size, off_t at), (fd, data, size, at),
     nullptr, size, Recorder::contentChanged(fd))
CALL(ssize_t, copy_file_range,
     (int from, off_t* fromAt, int to, off_t* toAt, std::size_t size, unsigned flags),
     (from, fromAt, to, toAt, size, flags), nullptr, size, Recorder::contentChanged(to))
CALL(off_t, lseek, (int fd, off_t at, int whence), (fd, at, whence), nullptr, false, {})
CALL(int, ftruncate, (int fd, off_t size), (fd, size), nullptr, false, Recorder::contentChanged(fd))
CALL(int, fsync, (int fd), (fd), nullptr, false, Recorder::fileCommitted(fd))
CALL(int, fdatasync, (int fd), (fd), nullptr, false, Recorder::fileCommitted(fd))
CALL(int, syncfs, (int fd), (fd), nullptr, false, Recorder::allCommitted())
CALL(int, sync_file_range, (int fd, off_t at, off_t size, unsigned flags), (fd, at, size, flags),
     nullptr, false, {})
CALL(int, fstat, (int fd, struct stat* status), (fd, status), nullptr, false, {})
CALL(int, stat, (const char* path, struct stat* status), (path, status), path, false, {})
CALL(int, lstat, (const char* path, struct stat* status), (path, status), path, false, {})
CALL(int, statx, (int folder, const char* path, int flags, unsigned mask, struct statx* status),
     (folder, path, flags, mask, status), path, false, {})
CALL(int, fstatat, (int folder, const char* path, struct stat* status, int flags),
     (folder, path, status, flags), path, false, {})
CALL(int, fstatfs, (int fd, struct statfs* status), (fd, status), nullptr, false, {})
CALL(int, access, (const char* path, int mode), (path, mode), path, false, {})
CALL(int, fallocate, (int fd, int mode, off_t at, off_t size), (fd, mode, at, size), nullptr, true,
     {})
CALL(int, fchown, (int fd, uid_t owner, gid_t group), (fd, owner, group), nullptr, false, {})
CALL(ssize_t, flistxattr, (int fd, char* list, std::size_t size), (fd, list, size), nullptr, false,
     {})
CALL(ssize_t, fgetxattr, (int fd, const char* name, void* value, std::size_t size),
     (fd, name, value, size), nullptr, false, {})
CALL(int, fsetxattr, (int fd, const char* name, const void* value, std::size_t size, int flags),
     (fd, name, value, size, flags), nullptr, true, {})
CALL(int, fremovexattr, (int fd, const char* name), (fd, name), nullptr, false, {})
CALL(int, fchmod, (int fd, mode_t mode), (fd, mode), nullptr, false, {})
CALL(int, chmod, (const char* path, mode_t mode), (path, mode), path, false, {})
CALL(int, futimens, (int fd, const struct timespec* times), (fd, times), nullptr, false, {})
CALL(int, linkat, (int from, const char* old, int to, const char* path, int flags),
     (from, old, to, path, flags), path, true, Recorder::namesChanged())
CALL(int, rename, (const char* old, const char* path), (old, path), path, false,
     Recorder::namesChanged())
CALL(int, renameat, (int from, const char* old, int to, const char* path), (from, old, to, path),
     path, false, Recorder::namesChanged())
CALL(int, renameat2, (int from, const char* old, int to, const char* path, unsigned flags),
     (from, old, to, path, flags), path, false, Recorder::namesChanged())
CALL(int, unlink, (const char* path), (path), path, false, Recorder::namesChanged())
CALL(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags), path, false,
     Recorder::namesChanged())
CALL(int, rmdir, (const char* path), (path), path, false, {})
CALL(int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode), path, true,
     {})
CALL(int, symlinkat, (const char* target, int folder, const char* path), (target, folder, path),
     path, true, Recorder::namesChanged())
CALL(int, utimensat, (int folder, const char* path, const struct timespec* times, int flags),
     (folder, path, times, flags), path, false, {})
CALL(int, mkdir, (const char* path, mode_t mode), (path, mode), path, true, {})
CALL(char*, realpath, (const char* path, char* real_path), (path, real_path), path, false, {})
CALL(DIR*, opendir, (const char* path), (path), path, false, {})
CALL(struct dirent*, readdir, (DIR * folder), (folder), nullptr, false, {})
CALL(ssize_t, getdents64, (int folder, void* block, std::size_t size), (folder, block, size),
     nullptr, false, {})

namespace {

bool creates(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

int openAndRecord(const char* name, int folder, const char* path, int flags, mode_t mode) {
  if (failing::fails(name, path, creates(flags))) return -1;
  const bool isNew =
      creates(flags) && ((flags & O_CREAT) == 0 || faccessat(folder, path, F_OK, 0) != 0);
  const int descriptor = support::openOnIdleSystem(folder, path, flags, mode);
  const int error = errno;
  if (descriptor >= 0 && isNew) Recorder::fileCreated(descriptor);
  if (descriptor >= 0 && (flags & O_TRUNC) != 0) Recorder::contentChanged(descriptor);
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
  if (result == 0 && request == FICLONE) Recorder::contentChanged(fd);
  return result;
}

INTERPOSED(int, pthread_create,
           (pthread_t * thread, const pthread_attr_t* attributes, void* (*work)(void*),
            void* argument)) {
  static const auto real = failing::next<decltype(&fake_pthread_create)>("pthread_create");
  ++failing::threads;
  return real(thread, attributes, work, argument);
}

// A close that fails has closed the descriptor nevertheless. The path is that of the file.
INTERPOSED(int, close, (int fd)) {
  static const auto real = failing::next<decltype(&fake_close)>("close");
  char path[PATH_MAX] = {};
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  if (readlink(link.c_str(), path, sizeof(path) - 1) < 0) *path = '\0';
  const int result = real(fd);
  return failing::fails("close", path, false) ? -1 : result;
}
