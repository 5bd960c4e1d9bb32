#pragma once
// Takes the place of a header of Visual C++'s: the macros that its standard library expects. Each has
// the meaning that the library's own comments or the compiler's documentation give it.

#include <_mingw.h>
#include <concurrencysal.h>
#include <corecrt.h>
#include <sal.h>
#include <stddef.h>
#include <stdint.h>

// The language version that the sources are compiled as.
#define _HAS_CXX17 (_MSVC_LANG > 201402L)
#define _HAS_CXX20 (_MSVC_LANG > 201703L)
#define _HAS_CXX23 (_MSVC_LANG > 202002L)
#define _HAS_NODISCARD 1
#define _NODISCARD [[nodiscard]]
#ifndef _HAS_EXCEPTIONS
#define _HAS_EXCEPTIONS 1
#endif

#define _VCRTIMP __declspec(dllimport)
#define _VCRT_ALLOCATOR __declspec(allocator)
#define _CRT_GUARDOVERFLOW
// Members of the library are declared with it; on 64-bit targets there is one convention.
#define __CLR_OR_THIS_CALL
#define __CLRCALL_OR_CDECL __cdecl
#define __CLRCALL_PURE_OR_CDECL __cdecl
// Where the compiler's own [[msvc::constexpr]] is needed; clang needs none.
#define _MSVC_CONSTEXPR
// Functions of the C runtime's DLL.
#define _ACRTIMP _CRTIMP
// Functions of msvcp140_1.dll and msvcp140_2.dll, and data of msvcp140_codecvt_ids.dll.
#define _CRT_SATELLITE_1
#define _CRT_SATELLITE_2
#define _CRT_SATELLITE_CODECVT_IDS
#define _CRT_SATELLITE_CODECVT_IDS_NOIMPORT
// An annotation that mingw-w64's <sal.h> lacks.
#define _Deref_post_opt_valid_
#define _CRT_SECURE_INVALID_PARAMETER(expression) ::_invalid_parameter_noinfo_noreturn()

#ifdef __cplusplus
#include <stdio.h>
#include <wchar.h>  // _Mbstatet, which <cstdio> names
// Functions of ucrtbase.dll that mingw-w64 does not declare.
extern "C" {
_CRTIMP __declspec(noreturn) void __cdecl _invalid_parameter_noinfo_noreturn();
_CRTIMP errno_t __cdecl _get_stream_buffer_pointers(FILE*, char***, char***, int**);
}
#endif
