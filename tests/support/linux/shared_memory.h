#pragma once
// Memory that a test and the processes forked from it share.

#include <sys/mman.h>

#include <new>

namespace support {

// Holds one `Content`. Its memory is freed, but it is never destroyed.
template <typename Content>
class SharedMemory {
 public:
  SharedMemory()
      : content_(new (mmap(nullptr, sizeof(Content), PROT_READ | PROT_WRITE,
                           MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Content()) {}
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  ~SharedMemory() { munmap(content_, sizeof(Content)); }
  Content* operator->() const { return content_; }
  Content& operator*() const { return *content_; }

 private:
  Content* content_;
};

}  // namespace support
