#include "platform/linux/file_handle.h"

#include <cerrno>

namespace platform::native {
namespace {

// From the lowest bit: 24 bits descriptor, one bit each for reading and
// writing, a marker, 37 bits tag.
constexpr unsigned kDescriptorBits = 24;
constexpr std::uint64_t kDescriptorMask = (std::uint64_t{1} << kDescriptorBits) - 1;
constexpr std::uint64_t kRead = std::uint64_t{1} << 24;
constexpr std::uint64_t kWrite = std::uint64_t{1} << 25;
// With its neighbour zero it tells handles from INVALID_HANDLE_VALUE and null.
constexpr std::uint64_t kMarker = std::uint64_t{1} << 26;
constexpr std::uint64_t kMarkerMask = std::uint64_t{3} << 26;
constexpr unsigned kTagShift = 28;

static_assert(sizeof(HANDLE) == sizeof(std::uint64_t));

std::uint64_t valueOf(HANDLE handle) { return reinterpret_cast<std::uintptr_t>(handle); }

std::uint64_t tagOf(const struct stat& status) {
  // Fibonacci hashing: the upper bits of the product depend on all of the input.
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  const std::uint64_t product = (status.st_ino * kFactor + status.st_dev) * kFactor;
  return product >> kTagShift;
}

}  // namespace

HANDLE makeFileHandle(int descriptor, DWORD access, const struct stat& status) {
  std::uint64_t value = static_cast<std::uint64_t>(descriptor) | kMarker;
  if ((access & GENERIC_READ) != 0) value |= kRead;
  if ((access & GENERIC_WRITE) != 0) value |= kWrite;
  value |= tagOf(status) << kTagShift;
  return reinterpret_cast<HANDLE>(value);
}

int descriptorOf(HANDLE handle) {
  const std::uint64_t value = valueOf(handle);
  return (value & kMarkerMask) == kMarker ? static_cast<int>(value & kDescriptorMask) : -1;
}

bool grants(HANDLE handle, DWORD access) {
  const std::uint64_t value = valueOf(handle);
  return ((access & GENERIC_READ) == 0 || (value & kRead) != 0) &&
         ((access & GENERIC_WRITE) == 0 || (value & kWrite) != 0);
}

bool isCurrent(HANDLE handle) {
  const int descriptor = descriptorOf(handle);
  if (descriptor < 0) return false;
  struct stat status;
  // A file that cannot be asked is open all the same, and has to be closed.
  if (fstat(descriptor, &status) != 0) return errno != EBADF;
  return tagOf(status) == valueOf(handle) >> kTagShift;
}

}  // namespace platform::native
