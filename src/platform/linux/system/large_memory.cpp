#include "platform/large_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

void platform::expectFilling(void* memory, std::size_t size) {
  // The hint is for whole pages. The rest of the first and last one may belong to
  // other allocations.
  const std::uintptr_t page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (start + page - 1) / page * page;
  const std::uintptr_t last = (start + size) / page * page;
  // A kernel without large pages refuses, which changes nothing.
  if (first < last) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}
