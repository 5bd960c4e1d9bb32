#pragma once
// Owner of a file descriptor and of the locks that were taken through it.

#include <cstdint>
#include <utility>

namespace platform::native {

// Never keeps one of the standard descriptors. Where the program closed them, a file would get such
// a number, and what is written to standard output would go into the file.
class Descriptor {
 public:
  Descriptor() = default;
  // Takes the result of a call that opens. If that is negative, errno is kept.
  explicit Descriptor(int value) : value_(value) {
    if (value >= 0 && value < kFirst) leaveStandard();
  }
  // Takes a descriptor that another owner released in the given state.
  Descriptor(int value, std::uint32_t locker) : value_(value), locker_(locker) {}
  Descriptor(Descriptor&& other) noexcept
      : value_(std::exchange(other.value_, -1)), locker_(std::exchange(other.locker_, 0)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    std::swap(locker_, other.locker_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (value_ >= 0) closeKeepingErrno();
  }

  explicit operator bool() const { return value_ >= 0; }
  int get() const { return value_; }
  // The caller gets the locks too, if there are some.
  int release() {
    locker_ = 0;
    return std::exchange(value_, -1);
  }

  // Unlocks and closes. False, with errno, if the file system reports an error then, as that of
  // content which it could not write; the descriptor is closed all the same.
  bool close();

  // Records that locks were taken through the descriptor, or that none is left. Only the process
  // that took them unlocks: a child that closes its copy leaves them to its parent.
  void markLocked();
  void markUnlocked() { locker_ = 0; }
  // The mark of the process that took the locks, or 0.
  std::uint32_t locker() const { return locker_; }

 private:
  static constexpr int kFirst = 3;

  void leaveStandard();
  void closeKeepingErrno();

  int value_ = -1;
  std::uint32_t locker_ = 0;
};

}  // namespace platform::native
