#pragma once
// Owner of a file descriptor.

#include <unistd.h>

#include <utility>

namespace platform::native {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }

  explicit operator bool() const { return value_ >= 0; }
  int get() const { return value_; }
  int release() { return std::exchange(value_, -1); }

 private:
  int value_ = -1;
};

}  // namespace platform::native
