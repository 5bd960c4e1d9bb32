#pragma once
// Windows' own Win32, without its macros that take everyday names.

// With a value, as the C++ runtime library defines it too.
#define NOMINMAX 1
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// After windows.h, which they need.
#include <objbase.h>
#include <oleauto.h>
#include <winver.h>

#undef small
#undef near
#undef far
#undef FAR
#define FAR

// A search for names costs Windows no more than one for whole records.
inline constexpr DWORD FIND_NAMES_ONLY = FIND_FIRST_EX_LARGE_FETCH;
