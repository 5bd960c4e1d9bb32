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
// Who has a right and denies it to all others takes write locks on both bytes, if
// its descriptor permits that. The system then decides in one step, and nothing
// needs to be asked. An opening that reads, writes and shares nothing takes one
// write lock on all bytes.
//
// Locking and asking are two steps, so two openings at the same time can see
// each other and both withdraw, although one could have had the file. The byte
// "in transit" prevents that. Who denies reading or writing, or deletes, holds it
// between the two steps. An opening that meets a contradiction while another one
// is in transit pauses for a random time and tries again. It also tries again if
// no one is in transit and the contradiction no longer exists: its cause has withdrawn.
//
// Network file systems. Over NFS F_OFD_GETLK does not report read locks of other
// clients, but refuses a write lock that they contradict. So there an opening that
// can write asks by taking the write lock for a moment. Over SMB unlocking a part
// of a range does nothing, so each lock is released in the ranges it was taken in,
// or with all others. There openings of one machine with equal flags are one for
// client and server, and their locks do not conflict: openApart avoids that.

#include "platform/linux/opening/share_lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

#include "platform/linux/opening/access_rights.h"
#include "platform/linux/opening/remote_file.h"

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
constexpr Range kTransitByte{kTransit, kTransit};

// A set of facts: bit i is the byte kFirstByte + i.
using Facts = unsigned;
constexpr Facts bit(off_t byte) { return Facts{1} << (byte - kFirstByte); }
constexpr Facts kAllFacts = bit(kDenyWrite + 1) - 1;

enum class Lock { Taken, Refused, Unavailable };

struct flock lockOn(Range range, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = range.first;
  lock.l_len = range.last - range.first + 1;
  return lock;
}

Lock take(int descriptor, Range range, short type) {
  struct flock lock = lockOn(range, type);
  if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0) return Lock::Taken;
  return errno == EAGAIN || errno == EACCES ? Lock::Refused : Lock::Unavailable;
}

void release(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_UNLCK);
  fcntl(descriptor, F_OFD_SETLK, &lock);
}

bool heldByOthers(int descriptor, Range range) {
  struct flock lock = lockOn(range, F_WRLCK);
  return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Calls `step(range)` for each range of adjacent facts until one returns false.
template <typename Step>
bool eachRange(Facts facts, Step step) {
  for (off_t first = kFirstByte; facts != 0; ++first, facts >>= 1) {
    if ((facts & 1) == 0) continue;
    off_t last = first;
    for (; (facts & 2) != 0; facts >>= 1) ++last;
    if (!step(Range{first, last})) return false;
    first = last;
  }
  return true;
}

Lock takeFacts(int descriptor, Facts facts, short type) {
  Lock result = Lock::Taken;
  eachRange(facts, [&](Range range) {
    result = take(descriptor, range, type);
    return result == Lock::Taken;
  });
  return result;
}

void pause() {
  thread_local std::minstd_rand random{std::random_device{}()};
  std::this_thread::sleep_for(std::chrono::microseconds(20 + random() % 300));
}

// The locks of an opening, and the facts that contradict it.
struct Request {
  Facts exclusive = 0;  // its write locks
  Facts shared = 0;     // its read locks
  Facts asked = 0;
  bool canWrite = false;

  void add(bool uses, off_t use, bool denies, off_t denial) {
    if (uses && denies && canWrite) {
      exclusive |= bit(use) | bit(denial);
      return;
    }
    if (uses) shared |= bit(use), asked |= bit(denial);
    if (denies) shared |= bit(denial), asked |= bit(use);
  }
  bool needsTransit() const {
    constexpr Facts kRare = bit(kDenyRead) | bit(kDenyWrite) | bit(kDeletes);
    return exclusive != kAllFacts && ((exclusive | shared) & kRare) != 0;
  }
};

// The descriptor is open for writing if the rights write.
Request requestOf(DWORD rights, DWORD share) {
  Request request{.canWrite = writes(rights)};
  if (reads(rights) && writes(rights) && share == 0) {
    request.exclusive = kAllFacts;
    return request;
  }
  request.add(reads(rights), kReads, (share & FILE_SHARE_READ) == 0, kDenyRead);
  request.add(writes(rights), kWrites, (share & FILE_SHARE_WRITE) == 0, kDenyWrite);
  request.add((rights & DELETE) != 0, kDeletes, (share & FILE_SHARE_DELETE) == 0, kDenyDelete);
  // Handles that coexist with the only writer do not deny reading, so its denial can be a write
  // lock too, which openings of other clients meet.
  const bool isOnlyWriter = (request.exclusive & bit(kWrites)) != 0;
  if (isOnlyWriter && (request.shared & bit(kDenyRead)) != 0) {
    request.shared &= ~bit(kDenyRead);
    request.exclusive |= bit(kDenyRead);
  }
  return request;
}

// The transit byte comes first, so that another opening that meets one of the
// facts finds this one in transit.
Lock takeAll(int descriptor, const Request& request) {
  Lock result = Lock::Taken;
  if (request.needsTransit()) result = take(descriptor, kTransitByte, F_RDLCK);
  if (result == Lock::Taken) result = takeFacts(descriptor, request.shared, F_RDLCK);
  if (result == Lock::Taken) result = takeFacts(descriptor, request.exclusive, F_WRLCK);
  return result;
}

bool contradicted(int descriptor, Facts facts) {
  return !eachRange(facts, [=](Range range) { return !heldByOthers(descriptor, range); });
}

// Does the same as contradicted, for an opening that has its own locks.
bool contradictedOnOpening(int descriptor, const Request& request, bool mayBeRemote) {
  if (contradicted(descriptor, request.asked)) return true;
  constexpr Facts kContent = bit(kReads) | bit(kWrites) | bit(kDenyRead) | bit(kDenyWrite);
  const Facts facts = request.asked & kContent & ~request.shared;
  if (!mayBeRemote || facts == 0 || !request.canWrite || !isRemoteFile(descriptor)) return false;
  return !eachRange(facts, [=](Range range) {
    if (take(descriptor, range, F_WRLCK) == Lock::Refused) return false;
    release(descriptor, range);
    return true;
  });
}

// The facts of others that contradict an opening. Who is refused a lock meets one of them, too.
bool contradicted(int descriptor, const Request& request) {
  return contradicted(descriptor, request.asked | request.exclusive);
}

// Whether a contradiction that was met in this attempt is that of a holder, not
// that of an opening which may still withdraw, or has done so. The opening has no locks.
bool isFinal(int descriptor, const Request& request, int attempt) {
  if (attempt == kAttempts) return true;
  constexpr Facts kDenials = bit(kDenyRead) | bit(kDenyWrite) | bit(kDeletes);
  const bool denies = ((request.exclusive | request.shared) & kDenials) != 0;
  if (denies && attempt < kDenierAttempts) return false;
  return !heldByOthers(descriptor, kTransitByte) && contradicted(descriptor, request);
}

}  // namespace

bool acquireShare(Descriptor& file, DWORD rights, DWORD share, bool mayBeRemote) {
  if (mayBeRemote) openApart(file);
  const int descriptor = file.get();
  const Request request = requestOf(rights, share);
  for (int attempt = 1;; ++attempt) {
    const Lock locked = takeAll(descriptor, request);
    if (locked == Lock::Unavailable) return true;
    if (locked == Lock::Taken && !contradictedOnOpening(descriptor, request, mayBeRemote)) {
      if (request.needsTransit()) release(descriptor, kTransitByte);
      file.markLocked();
      return true;
    }
    release(descriptor, kAllBytes);
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

void holdUnfinished(Descriptor& file) {
  if (take(file.get(), kFacts, F_WRLCK) == Lock::Taken) file.markLocked();
}

bool holdExclusively(int descriptor) {
  constexpr Facts kOwn = bit(kWrites) | bit(kDenyWrite);
  for (int attempt = 1;; ++attempt) {
    if (takeFacts(descriptor, kAllFacts & ~kOwn, F_WRLCK) != Lock::Refused) return true;
    eachRange(kAllFacts & ~kOwn, [=](Range range) {
      release(descriptor, range);
      return true;
    });
    if (attempt == kDenierAttempts) return false;
    pause();
  }
}

bool hasLocks(int descriptor) {
  struct flock lock = lockOn(kFacts, F_WRLCK);
  return fcntl(descriptor, F_OFD_GETLK, &lock) == 0;
}

bool isHeldByOthers(int descriptor) { return heldByOthers(descriptor, kFacts); }

bool deletionDenied(int descriptor) { return heldByOthers(descriptor, {kDenyDelete, kDenyDelete}); }

}  // namespace platform::native
