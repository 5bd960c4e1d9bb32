#pragma once
// Memory that is about to be filled from its start to its end.

#include <cstddef>

namespace platform {

// From this size on, in bytes, it pays to tell the system.
inline constexpr std::size_t kLargeMemory = std::size_t{4} << 20;

// Lets the system back memory that was not touched yet with large pages, so that
// filling it does not fault on every small one. Nothing else changes.
void expectFilling(void* memory, std::size_t size);

// Room for one content after the other. A large one comes from the system and
// goes straight back to it, where the heap would keep it below whatever was
// allocated since.
class Room {
 public:
  Room() = default;
  Room(const Room&) = delete;
  Room& operator=(const Room&) = delete;
  ~Room() { release(); }

  // At least `size` bytes; what was in them is lost if there were fewer. Throws
  // std::bad_alloc.
  unsigned char* of(std::size_t size);

 private:
  void release();

  unsigned char* bytes_ = nullptr;
  std::size_t capacity_ = 0;
};

// Gives an empty text or vector of bytes room for `size` bytes to come.
template <typename Bytes>
void reserveForFilling(Bytes& bytes, std::size_t size) {
  if (size <= bytes.capacity()) return;
  // The old room goes first: both together could be twice what is needed.
  bytes = Bytes();
  bytes.reserve(size);
  if (size >= kLargeMemory) expectFilling(bytes.data(), size);
}

}  // namespace platform
