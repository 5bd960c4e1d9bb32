#pragma once
// Included before each source by tests/msvc/check: what Visual C++'s headers declare and the
// headers at hand, mingw-w64's and libc++'s, do not declare for its target.

#include <_mingw.h>
#undef __MINGW_IMPORT
#define __MINGW_IMPORT extern __declspec(dllimport)

#include <stdlib.h>

extern "C" float _strtof_l(const char*, char**, _locale_t);
extern "C" long double _strtold_l(const char*, char**, _locale_t);
