#include "platform/large_memory.h"

#include <utility>

#include "platform/system_pages.h"

namespace platform {

unsigned char* ReusableBuffer::reserve(std::size_t size) {
  if (size <= capacity_) return bytes_;
  // The old memory is freed first, as both together could be twice the size.
  if (capacity_ < kLargeMemory) release();
  unsigned char* const former = std::exchange(bytes_, nullptr);
  const std::size_t had = std::exchange(capacity_, 0);
  bytes_ = size >= kLargeMemory ? allocatePages(former, had, size) : new unsigned char[size];
  capacity_ = size;
  return bytes_;
}

void ReusableBuffer::release() {
  if (capacity_ >= kLargeMemory) {
    freePages(bytes_, capacity_);
  } else {
    delete[] bytes_;
  }
  bytes_ = nullptr;
  capacity_ = 0;
}

}  // namespace platform
