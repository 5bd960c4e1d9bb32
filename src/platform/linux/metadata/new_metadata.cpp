#include "platform/linux/metadata/new_metadata.h"

#include <cerrno>

#include "platform/linux/metadata/file_time.h"
#include "platform/linux/metadata/write_time.h"

namespace platform::native {

bool applyLastWrite(int descriptor, const NewMetadata& metadata, const struct timespec& stored) {
  if (!metadata.lastWrite) return true;
  return setWriteTime(descriptor, timeSpecOf(*metadata.lastWrite), stored) || errno == EPERM;
}

// FAT refuses modes that it cannot store, and whom it does not take for the owner.
bool applyMode(int descriptor, const std::optional<std::uint32_t>& mode, mode_t current) {
  constexpr mode_t kBits = 07777;
  if (!mode || (*mode & kBits) == (current & kBits)) return true;
  return fchmod(descriptor, *mode & kBits) == 0 || errno == EPERM || errno == EOPNOTSUPP;
}

}  // namespace platform::native
