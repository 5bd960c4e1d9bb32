#pragma once
// Memory allocated from the system, without the heap.

#include <cstddef>

namespace platform {

// Allocates memory that is about to be filled, and frees `former`, which has
// `formerSize` bytes or is null. Throws std::bad_alloc, with `former` freed.
unsigned char* allocatePages(unsigned char* former, std::size_t formerSize, std::size_t size);
void freePages(unsigned char* pages, std::size_t size);

}  // namespace platform
