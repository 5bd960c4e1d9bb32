#pragma once
// Memory that is about to be filled from its start to its end.

#include <cstddef>

namespace platform {

// Sizes from this one on, in bytes, are worth a hint to the system.
inline constexpr std::size_t kLargeMemory = std::size_t{4} << 20;

// Lets the system back memory that was not touched yet with large pages, so that
// filling it does not fault on every small page.
void expectFilling(void* memory, std::size_t size);

// A buffer that is used for one content after the other. A large one is allocated
// from the system and returned to it at once. The heap could not return it while
// anything that was allocated later is in use.
class ReusableBuffer {
 public:
  ReusableBuffer() = default;
  ReusableBuffer(const ReusableBuffer&) = delete;
  ReusableBuffer& operator=(const ReusableBuffer&) = delete;
  ~ReusableBuffer() { release(); }

  // Returns at least `size` bytes. Their content is lost if the buffer grows.
  // Throws std::bad_alloc.
  unsigned char* reserve(std::size_t size);

 private:
  void release();

  unsigned char* bytes_ = nullptr;
  std::size_t capacity_ = 0;
};

// Reserves `size` bytes in an empty string or vector that is about to be filled.
template <typename Bytes>
void reserveForFilling(Bytes& bytes, std::size_t size) {
  if (size <= bytes.capacity()) return;
  // The old memory is freed first, as both together could be twice the size.
  bytes = Bytes();
  bytes.reserve(size);
  if (size >= kLargeMemory) expectFilling(bytes.data(), size);
}

}  // namespace platform
