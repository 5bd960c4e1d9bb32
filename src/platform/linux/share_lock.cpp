// Share modes.
//
// The problem. On Windows each opening states what it does with the file (read,
// write, delete) and what it lets others do meanwhile, and the kernel refuses an
// opening that contradicts an earlier one. Linux keeps no such record.
//
// The obvious answers fail:
//   - flock(2) knows shared and exclusive holders only. Three kinds of access and
//     three denials, freely combined, do not fit into that.
//   - The classic record locks of fcntl(2) belong to the process. Two handles of
//     one process never conflict, and closing any descriptor of the file drops
//     the locks of all.
//   - A table in a lock file or in shared memory keeps the entries of a process
//     that was killed.
//
// The answer is seven bytes of open file description locks at an offset that no
// content reaches. They conflict between any two openings, also of one process,
// and the kernel drops them with the last descriptor, also of a killed process.
// Each byte states one fact, and the read locks of several holders coexist:
//
//     2^62    +1      +2      +3      +4      +5      +6
//   +-------+-------+-------+-------+-------+-------+---------+
//   | reads | deny  |writes | deny  |deletes| deny  | in      |
//   |       | delete|       | read  |       | write | transit |
//   +-------+-------+-------+-------+-------+-------+---------+
//
// An opening locks the bytes of its own rights and denials. Then it asks, by
// F_OFD_GETLK with a write lock, whether others hold a byte that contradicts:
// a reader asks for "deny read", and who denies reading asks for "reads". The
// order of the bytes makes one call of each range that the usual opening needs.
// That opening denies nothing but deletion: it locks "reads" to "deny delete" or
// "reads" to "writes", and asks for "deny read" to "deletes" or to "deny write".
//
// Locking and asking are two steps, so two openings at the same time can see
// each other and both withdraw, although one could have had the file. The byte
// "in transit" prevents that. Who denies reading or writing, or deletes, holds it
// between the two steps. An opening that meets a contradiction while another one
// is in transit pauses for a random time and tries again.

#include "platform/linux/share_lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

#include "platform/linux/access_rights.h"

namespace platform::native {
namespace {

constexpr off_t kFirstByte = off_t{1} << 62;
constexpr off_t kReads = kFirstByte;
constexpr off_t kDenyDelete = kFirstByte + 1;
constexpr off_t kWrites = kFirstByte + 2;
constexpr off_t kDenyRead = kFirstByte + 3;
constexpr off_t kDeletes = kFirstByte + 4;
constexpr off_t kDenyWrite = kFirstByte + 5;
constexpr off_t kTransit = kFirstByte + 6;

constexpr int kAttempts = 12;
// An opening that denies access asks some times even if no one is in transit:
// the access that it met may be that of an opening which is about to withdraw.
constexpr int kDenierAttempts = 3;

struct Range {
  off_t first;
  off_t last;
};

constexpr Range kFacts{kReads, kDenyWrite};
constexpr Range kAllBytes{kReads, kTransit};

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

Lock take(int descriptor, off_t byte) { return take(descriptor, Range{byte, byte}); }

void release(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_UNLCK);
  fcntl(descriptor, F_OFD_SETLK, &lock);
}

bool heldByOthers(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_WRLCK);
  return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

bool heldByOthers(int descriptor, off_t byte) {
  return heldByOthers(descriptor, Range{byte, byte});
}

void pause() {
  thread_local std::minstd_rand random{std::random_device{}()};
  std::this_thread::sleep_for(std::chrono::microseconds(20 + random() % 300));
}

struct Request {
  bool read;
  bool write;
  bool remove;
  bool denyRead;
  bool denyWrite;
  bool denyDelete;

  bool needsTransit() const { return denyRead || denyWrite || remove; }
};

Request requestOf(DWORD rights, DWORD share) {
  return {.read = reads(rights),
          .write = writes(rights),
          .remove = (rights & DELETE) != 0,
          .denyRead = (share & FILE_SHARE_READ) == 0,
          .denyWrite = (share & FILE_SHARE_WRITE) == 0,
          .denyDelete = (share & FILE_SHARE_DELETE) == 0};
}

// The transit byte comes first, so that another opening that meets one of the
// facts finds this one in transit.
Lock takeAll(int descriptor, const Request& request) {
  if (request.needsTransit()) {
    const Lock transit = take(descriptor, kTransit);
    if (transit != Lock::Taken) return transit;
    if (request.denyRead) take(descriptor, kDenyRead);
    if (request.denyWrite) take(descriptor, kDenyWrite);
    if (request.remove) take(descriptor, kDeletes);
  }
  if (request.denyDelete) {
    return take(descriptor,
                Range{request.read ? kReads : kDenyDelete, request.write ? kWrites : kDenyDelete});
  }
  Lock result = Lock::Taken;
  if (request.read) result = take(descriptor, kReads);
  if (result == Lock::Taken && request.write) result = take(descriptor, kWrites);
  return result;
}

// Whether others deny reading or writing, or delete, where that contradicts. One
// call, but for an opening that reads and writes and lets others delete.
bool accessContradicted(int descriptor, const Request& request) {
  if (request.read && request.write && !request.denyDelete) {
    return heldByOthers(descriptor, kDenyRead) || heldByOthers(descriptor, kDenyWrite);
  }
  const off_t least = request.denyDelete ? kDeletes : request.read ? kDenyRead : kDenyWrite;
  return (request.read || request.write || request.denyDelete) &&
         heldByOthers(descriptor,
                      {request.read ? kDenyRead : least, request.write ? kDenyWrite : least});
}

bool contradicted(int descriptor, const Request& request) {
  return accessContradicted(descriptor, request) ||
         (request.remove && heldByOthers(descriptor, kDenyDelete)) ||
         (request.denyRead && heldByOthers(descriptor, kReads)) ||
         (request.denyWrite && heldByOthers(descriptor, kWrites));
}

// Whether a contradiction that was met in this attempt is that of a holder, not
// that of an opening which may still withdraw.
bool isFinal(int descriptor, const Request& request, int attempt) {
  if (attempt == kAttempts) return true;
  if (request.needsTransit() && attempt < kDenierAttempts) return false;
  return !heldByOthers(descriptor, kTransit);
}

}  // namespace

bool acquireShare(Descriptor& file, DWORD rights, DWORD share) {
  const int descriptor = file.get();
  const Request request = requestOf(rights, share);
  for (int attempt = 1;; ++attempt) {
    const Lock locked = takeAll(descriptor, request);
    if (locked == Lock::Unavailable) return true;
    file.markLocked();
    if (locked == Lock::Taken && !contradicted(descriptor, request)) {
      if (request.needsTransit()) release(descriptor, {kTransit, kTransit});
      return true;
    }
    release(descriptor, kAllBytes);
    file.markUnlocked();
    if (isFinal(descriptor, request, attempt)) return false;
    pause();
  }
}

bool shareAvailable(int descriptor, DWORD rights, DWORD share) {
  const Request request = requestOf(rights, share);
  for (int attempt = 1; contradicted(descriptor, request); ++attempt) {
    if (isFinal(descriptor, request, attempt)) return false;
    pause();
  }
  return true;
}

bool acquireNew(Descriptor& file, DWORD rights, DWORD share) {
  if (share != 0 || !reads(rights) || !writes(rights)) return false;
  const int descriptor = file.get();
  if (take(descriptor, kAllBytes) != Lock::Taken) return false;
  const bool isAlone = !heldByOthers(descriptor, kAllBytes);
  release(descriptor, isAlone ? Range{kTransit, kTransit} : kAllBytes);
  if (isAlone) file.markLocked();
  return isAlone;
}

void holdUnfinished(Descriptor& file) {
  if (take(file.get(), kFacts) == Lock::Taken) file.markLocked();
}

bool holdExclusively(int descriptor) {
  for (int attempt = 1;; ++attempt) {
    take(descriptor, kTransit);
    take(descriptor, kDenyRead);
    const bool isAlone = !isHeldByOthers(descriptor);
    release(descriptor, {kTransit, kTransit});
    if (isAlone) return true;
    release(descriptor, {kDenyRead, kDenyRead});
    if (attempt == kDenierAttempts) return false;
    pause();
  }
}

bool hasLocks(int descriptor) {
  struct flock lock = lockOn(kFacts, F_WRLCK);
  return fcntl(descriptor, F_OFD_GETLK, &lock) == 0;
}

bool isHeldByOthers(int descriptor) { return heldByOthers(descriptor, kFacts); }

bool deletionDenied(int descriptor) { return heldByOthers(descriptor, kDenyDelete); }

}  // namespace platform::native
