#include "platform/system_pages.h"

#include <new>

#include "platform/win32.h"

unsigned char* platform::allocatePages(unsigned char* former, std::size_t formerSize,
                                       std::size_t size) {
  if (former != nullptr) freePages(former, formerSize);
  void* const pages = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (pages == nullptr) throw std::bad_alloc();
  return static_cast<unsigned char*>(pages);
}

void platform::freePages(unsigned char* pages, std::size_t) { VirtualFree(pages, 0, MEM_RELEASE); }
