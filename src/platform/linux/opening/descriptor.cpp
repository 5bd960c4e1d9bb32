#include "platform/linux/opening/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/opening/process_mark.h"

namespace platform::native {
namespace {

// Locks belong to what was opened, and a child process shares that until it calls exec. Without an
// explicit unlock they would stay as long as such a child has its copy of the descriptor.
void unlock(int descriptor) {
  struct flock whole {};
  whole.l_type = F_UNLCK;
  whole.l_whence = SEEK_SET;
  fcntl(descriptor, F_OFD_SETLK, &whole);
}

}  // namespace

void Descriptor::leaveStandard() {
  const int moved = fcntl(value_, F_DUPFD_CLOEXEC, kFirst);
  const int error = errno;
  ::close(value_);
  value_ = moved;
  errno = error;
}

bool Descriptor::close() {
  if (locker_ != 0 && locker_ == processMark()) unlock(value_);
  return ::close(release()) == 0;
}

void Descriptor::closeKeepingErrno() {
  const int error = errno;
  close();
  errno = error;
}

void Descriptor::markLocked() { locker_ = processMark(); }

}  // namespace platform::native
