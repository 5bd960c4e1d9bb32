#pragma once
// What the sources of the standard library expect of Visual C++'s runtime and of Windows' headers.

#include <windows.h>

#include <cstdlib>
#include <memory>

// Newer than mingw-w64's headers.
constexpr auto FileDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
extern "C" DWORD WINAPI GetTempPath2W(DWORD size, LPWSTR buffer);

struct __crt_heap_free {
  void operator()(void* memory) const noexcept { std::free(memory); }
};
template <typename T>
using __crt_unique_heap_ptr = std::unique_ptr<T, __crt_heap_free>;
#define _malloc_crt_t(type, count) \
  __crt_unique_heap_ptr<type>(static_cast<type*>(std::malloc((count) * sizeof(type))))
