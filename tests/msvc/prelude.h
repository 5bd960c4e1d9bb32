#pragma once
// Included before each source by tests/msvc/check: what Visual C++'s headers declare and the
// headers at hand, mingw-w64's and libc++'s, do not declare for its target.

#include <_mingw.h>
#undef __MINGW_IMPORT
#define __MINGW_IMPORT extern __declspec(dllimport)

#include <stdlib.h>

extern "C" float _strtof_l(const char*, char**, _locale_t);
extern "C" long double _strtold_l(const char*, char**, _locale_t);

#include <memory>

#ifndef __cpp_lib_smart_ptr_for_overwrite
namespace std {
template <typename Array>
unique_ptr<Array> make_unique_for_overwrite(size_t size) {
  return unique_ptr<Array>(new remove_extent_t<Array>[size]);
}
}  // namespace std
#endif
