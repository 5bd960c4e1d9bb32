#include "platform/system_pages.h"

#include <sys/mman.h>

#include <new>

#include "platform/large_memory.h"

namespace {

// Rounds up to whole pages of any size. Memory that ends within a page could not
// be moved.
std::size_t wholePages(std::size_t size) {
  constexpr std::size_t kLargestPage = std::size_t{64} << 10;
  return (size + kLargestPage - 1) / kLargestPage * kLargestPage;
}

}  // namespace

unsigned char* platform::allocatePages(unsigned char* former, std::size_t formerSize,
                                       std::size_t size) {
  const std::size_t whole = wholePages(size);
  // The kernel need not clear the former pages again.
  void* const pages =
      former != nullptr
          ? mremap(former, wholePages(formerSize), whole, MREMAP_MAYMOVE)
          : mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    if (former != nullptr) freePages(former, formerSize);
    throw std::bad_alloc();
  }
  expectFilling(pages, whole);
  return static_cast<unsigned char*>(pages);
}

void platform::freePages(unsigned char* pages, std::size_t size) {
  munmap(pages, wholePages(size));
}
