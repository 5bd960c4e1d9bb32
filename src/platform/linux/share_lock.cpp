// Each holder keeps read locks on the bytes of the access it has and of the
// sharing it denies, and looks whether others hold a byte that contradicts. The
// locks of one file description never conflict with each other, and they go
// with its last descriptor, so that a killed process leaves nothing behind.
//
// A lock and a look are two steps, so rivals can see each other and both give
// way. The usual open, which denies neither reading nor writing, looks again
// while a rival is between its own two steps, which the transit byte tells;
// those that deny more make some attempts with pauses of random length.

#include "platform/linux/share_lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

namespace platform::native {
namespace {

constexpr off_t kShareBase = off_t{1} << 62;

// Neighbours that are locked or looked at together lie side by side: what the
// usual open locks, and what it looks at.
constexpr off_t kReadAccess = kShareBase + 0;
constexpr off_t kDenyDelete = kShareBase + 1;
constexpr off_t kWriteAccess = kShareBase + 2;
constexpr off_t kDenyRead = kShareBase + 3;
// Free, so that a look at both denials meets nothing between them.
constexpr off_t kDenyWrite = kShareBase + 5;
constexpr off_t kTransit = kShareBase + 6;

constexpr int kAttempts = 12;

struct Range {
  off_t first;
  off_t last;
};

enum class Lock { Taken, Refused, Unavailable };

struct flock lockOn(Range range, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = range.first;
  lock.l_len = range.last - range.first + 1;
  return lock;
}

Lock take(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_RDLCK);
  if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0) return Lock::Taken;
  return errno == EAGAIN || errno == EACCES ? Lock::Refused : Lock::Unavailable;
}

void letGo(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_UNLCK);
  fcntl(descriptor, F_OFD_SETLK, &lock);
}

bool heldByOthers(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_WRLCK);
  return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void pause() {
  thread_local std::minstd_rand random{std::random_device{}()};
  std::this_thread::sleep_for(std::chrono::microseconds(20 + random() % 300));
}

struct Request {
  bool read;
  bool write;
  bool denyRead;
  bool denyWrite;
  bool denyDelete;

  bool deniesAccess() const { return denyRead || denyWrite; }
};

Request requestOf(DWORD access, DWORD share) {
  return {.read = (access & GENERIC_READ) != 0,
          .write = (access & GENERIC_WRITE) != 0,
          .denyRead = (share & FILE_SHARE_READ) == 0,
          .denyWrite = (share & FILE_SHARE_WRITE) == 0,
          .denyDelete = (share & FILE_SHARE_DELETE) == 0};
}

constexpr Range kAllBytes{kReadAccess, kTransit};

Lock takeAll(int descriptor, const Request& request) {
  // The transit byte first, and the denials before the access, so that a rival
  // that meets a denial finds it in transit as well.
  if (request.deniesAccess()) {
    const Lock transit = take(descriptor, {kTransit, kTransit});
    if (transit != Lock::Taken) return transit;
    if (request.denyRead) take(descriptor, {kDenyRead, kDenyRead});
    if (request.denyWrite) take(descriptor, {kDenyWrite, kDenyWrite});
  }
  if (request.denyDelete) {
    return take(descriptor, {request.read ? kReadAccess : kDenyDelete,
                             request.write ? kWriteAccess : kDenyDelete});
  }
  Lock result = Lock::Taken;
  if (request.read) result = take(descriptor, {kReadAccess, kReadAccess});
  if (result == Lock::Taken && request.write) {
    result = take(descriptor, {kWriteAccess, kWriteAccess});
  }
  return result;
}

bool contradicted(int descriptor, const Request& request) {
  if ((request.read || request.write) &&
      heldByOthers(descriptor, {request.read ? kDenyRead : kDenyWrite,
                                request.write ? kDenyWrite : kDenyRead})) {
    return true;
  }
  return (request.denyRead && heldByOthers(descriptor, {kReadAccess, kReadAccess})) ||
         (request.denyWrite && heldByOthers(descriptor, {kWriteAccess, kWriteAccess}));
}

bool rivalInTransit(int descriptor) { return heldByOthers(descriptor, {kTransit, kTransit}); }

// Whether a contradiction that was met this many times is a firm holder's. A
// denier looks some times more, as a rival's access may only pass by.
bool givesUp(int descriptor, const Request& request, int attempt) {
  constexpr int kDenierAttempts = 3;
  if (attempt == kAttempts) return true;
  if (request.deniesAccess() && attempt < kDenierAttempts) return false;
  return !rivalInTransit(descriptor);
}

}  // namespace

ShareResult acquireShare(int descriptor, DWORD access, DWORD share) {
  const Request request = requestOf(access, share);
  for (int attempt = 1;; ++attempt) {
    const Lock locked = takeAll(descriptor, request);
    if (locked == Lock::Unavailable) return ShareResult::Granted;
    if (locked == Lock::Taken && !contradicted(descriptor, request)) {
      if (request.deniesAccess()) letGo(descriptor, {kTransit, kTransit});
      return ShareResult::Granted;
    }
    letGo(descriptor, kAllBytes);
    if (givesUp(descriptor, request, attempt)) return ShareResult::Violation;
    pause();
  }
}

bool shareAvailable(int descriptor, DWORD access, DWORD share) {
  const Request request = requestOf(access, share);
  for (int attempt = 1; contradicted(descriptor, request); ++attempt) {
    if (givesUp(descriptor, request, attempt)) return false;
    pause();
  }
  return true;
}

bool holdNew(int descriptor, DWORD access, DWORD share) {
  constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE;
  if (share != 0 || (access & kAccess) != kAccess) return false;
  if (take(descriptor, kAllBytes) != Lock::Taken) return false;
  if (!heldByOthers(descriptor, kAllBytes)) {
    letGo(descriptor, {kTransit, kTransit});
    return true;
  }
  letGo(descriptor, kAllBytes);
  return false;
}

void holdAlone(int descriptor) { take(descriptor, {kReadAccess, kDenyWrite}); }

bool deletionDenied(int descriptor) { return heldByOthers(descriptor, {kDenyDelete, kDenyDelete}); }

}  // namespace platform::native
