#pragma once
// Owners of the platform's handles, closed with the owner.

#include <utility>

#include "platform/win32.h"

namespace platform {

// Owns a handle whose invalid value is INVALID_HANDLE_VALUE; Close is the
// function that closes it.
template <BOOL (*Close)(HANDLE)>
class UniqueHandle {
 public:
  UniqueHandle() = default;
  explicit UniqueHandle(HANDLE handle) : handle_(handle) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    reset(other.release());
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { reset(); }

  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }
  HANDLE release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }
  void reset(HANDLE handle = INVALID_HANDLE_VALUE) {
    const HANDLE old = std::exchange(handle_, handle);
    if (old != INVALID_HANDLE_VALUE) Close(old);
  }

 private:
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// Thin functions, because the platform's own may have a calling convention that
// a template argument cannot name portably.
inline BOOL closeFile(HANDLE handle) { return CloseHandle(handle); }
inline BOOL closeSearch(HANDLE handle) { return FindClose(handle); }

using FileHandle = UniqueHandle<closeFile>;
using SearchHandle = UniqueHandle<closeSearch>;

}  // namespace platform
