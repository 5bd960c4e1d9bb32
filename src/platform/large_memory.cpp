#include "platform/large_memory.h"

#include <utility>

#include "platform/system_pages.h"

namespace platform {

unsigned char* Room::of(std::size_t size) {
  if (size <= capacity_) return bytes_;
  // The old room goes first: both together could be twice what is needed.
  if (capacity_ < kLargeMemory) release();
  unsigned char* const former = std::exchange(bytes_, nullptr);
  const std::size_t had = std::exchange(capacity_, 0);
  bytes_ = size >= kLargeMemory ? takePages(former, had, size) : new unsigned char[size];
  capacity_ = size;
  return bytes_;
}

void Room::release() {
  if (capacity_ >= kLargeMemory) {
    givePagesBack(bytes_, capacity_);
  } else {
    delete[] bytes_;
  }
  bytes_ = nullptr;
  capacity_ = 0;
}

}  // namespace platform
