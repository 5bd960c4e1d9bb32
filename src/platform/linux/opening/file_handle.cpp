#include "platform/linux/opening/file_handle.h"

#include <array>
#include <atomic>
#include <utility>

#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

// A handle, from its lowest bit:
//
//   24 bits      3 bits             1 bit   4 bits  32 bits
//   descriptor   read write append  marker  zero    number of the opening
//
// The marker and the zeros distinguish handles from null and from
// INVALID_HANDLE_VALUE. The bits of the rights are those of FILE_READ_DATA,
// FILE_WRITE_DATA and FILE_APPEND_DATA.
constexpr unsigned kRightsShift = 24;
constexpr std::uint64_t kDescriptorMask = (std::uint64_t{1} << kRightsShift) - 1;
constexpr DWORD kRights = FILE_READ_DATA | FILE_WRITE_DATA | FILE_APPEND_DATA;
constexpr std::uint64_t kMarker = std::uint64_t{1} << 27;
constexpr std::uint64_t kMarkerMask = std::uint64_t{0x1F} << 27;
constexpr unsigned kOpeningShift = 32;

static_assert(sizeof(HANDLE) == sizeof(std::uint64_t));
static_assert(kRights == 7);

// As many descriptors as Linux lets a process have, unless the administrator
// raised fs.nr_open. Pages of the table that no descriptor uses take no memory.
constexpr std::size_t kDescriptors = std::size_t{1} << 20;

struct Entry {
  // Changes whenever the descriptor is opened or closed through this layer. It
  // repeats after 2^31 openings of one descriptor.
  std::atomic<std::uint32_t> opening;
  // That of the descriptor which the handle owns.
  std::atomic<std::uint32_t> locker;
};
std::array<Entry, kDescriptors> entries;

std::uint64_t valueOf(HANDLE handle) { return reinterpret_cast<std::uintptr_t>(handle); }

std::uint32_t openingOf(HANDLE handle) {
  return static_cast<std::uint32_t>(valueOf(handle) >> kOpeningShift);
}

// The table's entry for a value that makeFileHandle can have returned, or null.
Entry* entryOf(HANDLE handle) {
  const std::uint64_t value = valueOf(handle);
  const std::uint64_t descriptor = value & kDescriptorMask;
  const bool isHandle = (value & kMarkerMask) == kMarker && descriptor < kDescriptors;
  return isHandle ? &entries[descriptor] : nullptr;
}

int descriptorIn(HANDLE handle) { return static_cast<int>(valueOf(handle) & kDescriptorMask); }

// Returns the entry of an opening that this call ended, or null.
Entry* ended(HANDLE handle) {
  Entry* const entry = entryOf(handle);
  std::uint32_t opening = openingOf(handle);
  const bool isEnded = entry != nullptr && entry->opening.compare_exchange_strong(
                                               opening, opening + 1, std::memory_order_relaxed);
  return isEnded ? entry : nullptr;
}

}  // namespace

HANDLE makeFileHandle(int descriptor, DWORD rights) {
  const auto index = static_cast<std::size_t>(descriptor);
  if (index >= kDescriptors) return invalidHandle(ERROR_TOO_MANY_OPEN_FILES);
  const std::uint64_t opening = entries[index].opening.fetch_add(1, std::memory_order_relaxed) + 1U;
  const std::uint64_t value =
      index | std::uint64_t{rights & kRights} << kRightsShift | kMarker | opening << kOpeningShift;
  return reinterpret_cast<HANDLE>(value);
}

HANDLE makeFileHandle(Descriptor file, DWORD rights) {
  const HANDLE handle = makeFileHandle(file.get(), rights);
  Entry* const entry = entryOf(handle);
  if (entry != nullptr) {
    entry->locker.store(file.locker(), std::memory_order_relaxed);
    file.release();
  }
  return handle;
}

int descriptorOf(HANDLE handle) {
  const auto* const entry = entryOf(handle);
  const bool isOpen =
      entry != nullptr && entry->opening.load(std::memory_order_relaxed) == openingOf(handle);
  return isOpen ? descriptorIn(handle) : -1;
}

void endOpening(HANDLE handle) { ended(handle); }

Descriptor takeDescriptor(HANDLE handle) {
  const Entry* const entry = ended(handle);
  if (entry == nullptr) return {};
  return {descriptorIn(handle), entry->locker.load(std::memory_order_relaxed)};
}

bool grantsAny(HANDLE handle, DWORD rights) {
  return (valueOf(handle) >> kRightsShift & rights & kRights) != 0;
}

}  // namespace platform::native
