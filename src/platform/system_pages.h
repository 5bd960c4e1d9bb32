#pragma once
// Memory of the system's own, past the heap.

#include <cstddef>

namespace platform {

// Memory that is about to be filled, in exchange for `former` of `had` bytes, or
// null; what was in that is lost. Throws std::bad_alloc; `former` is gone then too.
unsigned char* takePages(unsigned char* former, std::size_t had, std::size_t size);
void givePagesBack(unsigned char* pages, std::size_t size);

}  // namespace platform
