// Reading, writing, positions and sizes of open files.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>

#include "platform/linux/opening/file_handle.h"
#include "platform/linux/replacing/durability.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

// Most bytes that Linux transfers in one call, whatever it is asked for.
constexpr std::size_t kLargestTransfer = 0x7FFFF000;

// Returns the descriptor of an open handle, or -1 with the error.
int opened(HANDLE handle) {
  const int descriptor = descriptorOf(handle);
  if (descriptor < 0) fail(ERROR_INVALID_HANDLE);
  return descriptor;
}

// Does the same for a handle that needs one of these rights.
int openedFor(HANDLE handle, DWORD rights) {
  const int descriptor = opened(handle);
  if (descriptor < 0 || grantsAny(handle, rights)) return descriptor;
  fail(ERROR_ACCESS_DENIED);
  return -1;
}

off_t offsetOf(const OVERLAPPED& overlapped) {
  return static_cast<off_t>(std::uint64_t{overlapped.OffsetHigh} << 32 | overlapped.Offset);
}

// Calls `step(done, size)`, which transfers at most `size` bytes, until all bytes
// are done or it returns 0. False, with errno, if it returned a negative value.
template <typename Step>
bool transfer(DWORD size, DWORD& done, Step step) {
  done = 0;
  while (done < size) {
    const ssize_t count = step(done, std::min<std::size_t>(size - done, kLargestTransfer));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    done += static_cast<DWORD>(count);
  }
  return true;
}

}  // namespace
}  // namespace platform::native

using namespace platform::native;

BOOL CloseHandle(HANDLE handle) {
  Descriptor file = takeDescriptor(handle);
  if (!file) return fail(ERROR_INVALID_HANDLE);
  return file.close() || errno == EINTR ? TRUE : failWithErrno();
}

BOOL ReadFile(HANDLE handle, void* buffer, DWORD size, DWORD* read, OVERLAPPED* overlapped) {
  DWORD ignored = 0;
  DWORD& done = read != nullptr ? *read : ignored;
  done = 0;
  const int descriptor = openedFor(handle, FILE_READ_DATA);
  if (descriptor < 0) return FALSE;
  char* const bytes = static_cast<char*>(buffer);
  const bool complete =
      overlapped == nullptr
          ? transfer(
                size, done,
                [=](DWORD at, std::size_t count) { return ::read(descriptor, bytes + at, count); })
          : transfer(size, done, [=](DWORD at, std::size_t count) {
              return pread(descriptor, bytes + at, count, offsetOf(*overlapped) + off_t{at});
            });
  // Bytes that were read before a failure are returned; the next call fails.
  return complete || done > 0 ? TRUE : failWithErrno();
}

BOOL WriteFile(HANDLE handle, const void* data, DWORD size, DWORD* written,
               OVERLAPPED* overlapped) {
  DWORD ignored = 0;
  DWORD& done = written != nullptr ? *written : ignored;
  done = 0;
  const int descriptor = openedFor(handle, FILE_WRITE_DATA | FILE_APPEND_DATA);
  if (descriptor < 0) return FALSE;
  const char* const bytes = static_cast<const char*>(data);
  const bool complete =
      overlapped == nullptr
          ? transfer(
                size, done,
                [=](DWORD at, std::size_t count) { return ::write(descriptor, bytes + at, count); })
          : transfer(size, done, [=](DWORD at, std::size_t count) {
              return pwrite(descriptor, bytes + at, count, offsetOf(*overlapped) + off_t{at});
            });
  return complete ? TRUE : failWithErrno();
}

BOOL FlushFileBuffers(HANDLE handle) {
  const int descriptor = openedFor(handle, FILE_WRITE_DATA | FILE_APPEND_DATA);
  if (descriptor < 0) return FALSE;
  // File systems that have nothing to commit fail with EINVAL.
  return fdatasync(descriptor) == 0 || errno == EINVAL ? TRUE : failWithErrno();
}

DWORD SetFilePointer(HANDLE handle, LONG distance, LONG* distanceHigh, DWORD method) {
  LARGE_INTEGER wanted{};
  wanted.QuadPart = distanceHigh == nullptr
                        ? LONGLONG{distance}
                        : static_cast<LONGLONG>(static_cast<ULONGLONG>(*distanceHigh) << 32 |
                                                static_cast<DWORD>(distance));
  LARGE_INTEGER position{};
  if (!SetFilePointerEx(handle, wanted, &position, method)) return INVALID_SET_FILE_POINTER;
  if (distanceHigh != nullptr) {
    *distanceHigh = static_cast<LONG>(position.QuadPart >> 32);
  } else if (position.QuadPart > std::numeric_limits<DWORD>::max()) {
    fail(ERROR_INVALID_PARAMETER);
    return INVALID_SET_FILE_POINTER;
  }
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(position.QuadPart);
}

BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position,
                      DWORD method) {
  const int descriptor = opened(handle);
  if (descriptor < 0) return FALSE;
  constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (method >= std::size(kWhence)) return fail(ERROR_INVALID_PARAMETER);
  const off_t reached = lseek(descriptor, distance.QuadPart, kWhence[method]);
  if (reached < 0) return errno == EINVAL ? fail(ERROR_NEGATIVE_SEEK) : failWithErrno();
  if (position != nullptr) position->QuadPart = reached;
  return TRUE;
}

BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size) {
  const int descriptor = opened(handle);
  if (descriptor < 0) return FALSE;
  struct stat status;
  if (fstat(descriptor, &status) != 0) return failWithErrno();
  size->QuadPart = status.st_size;
  return TRUE;
}

BOOL SetEndOfFile(HANDLE handle) {
  const int descriptor = openedFor(handle, FILE_WRITE_DATA);
  if (descriptor < 0) return FALSE;
  const off_t position = lseek(descriptor, 0, SEEK_CUR);
  return position >= 0 && ftruncate(descriptor, position) == 0 ? TRUE : failWithErrno();
}
