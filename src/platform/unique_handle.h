#pragma once
// Owners of the platform's handles.

#include <utility>

#include "platform/win32.h"

namespace platform {

// Owns a handle, invalid as INVALID_HANDLE_VALUE, and closes it with Close.
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

// The system's functions may have a calling convention that a template argument
// cannot name portably.
inline BOOL closeFile(HANDLE handle) { return CloseHandle(handle); }
inline BOOL closeSearch(HANDLE handle) { return FindClose(handle); }

using FileHandle = UniqueHandle<closeFile>;
using SearchHandle = UniqueHandle<closeSearch>;

}  // namespace platform
