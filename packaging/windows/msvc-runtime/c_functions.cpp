// C functions that mingw-w64 declares and Visual C++ has in headers, so that ucrtbase.dll lacks them.

// The headers define some of them in optimised code.
#define __CRT__NO_INLINE 1
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

extern "C" {

_CRTIMP int __cdecl __stdio_common_vsprintf(unsigned long long options, char* text, size_t size,
                                            const char* format, _locale_t, va_list);
_CRTIMP int __cdecl __stdio_common_vfprintf(unsigned long long options, FILE*, const char* format,
                                            _locale_t, va_list);

int __cdecl vsnprintf(char* text, size_t size, const char* format, va_list arguments) {
  // The result is the length that the text would have.
  constexpr unsigned long long kStandardLength = 2;
  return __stdio_common_vsprintf(kStandardLength, text, size, format, nullptr, arguments);
}

int __cdecl snprintf(char* text, size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vsnprintf(text, size, format, arguments);
  va_end(arguments);
  return length;
}

int __cdecl vfprintf(FILE* file, const char* format, va_list arguments) {
  return __stdio_common_vfprintf(0, file, format, nullptr, arguments);
}

int __cdecl vprintf(const char* format, va_list arguments) {
  return vfprintf(stdout, format, arguments);
}

int __cdecl fprintf(FILE* file, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vfprintf(file, format, arguments);
  va_end(arguments);
  return length;
}

int __cdecl printf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = vprintf(format, arguments);
  va_end(arguments);
  return length;
}

wchar_t* __cdecl wmemcpy(wchar_t* to, const wchar_t* from, size_t count) {
  return static_cast<wchar_t*>(memcpy(to, from, count * sizeof(wchar_t)));
}

wchar_t* __cdecl wmemset(wchar_t* to, wchar_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) to[i] = value;
  return to;
}

}  // extern "C"
