#pragma once
/// @file
/// The macro that marks the exported declarations, and those that mark classes in the place of MFC's.
/// The build of the library and its CMake and pkg-config packages define the macros that they depend
/// on; hosts need not.

#include <string>  // with Visual C++, defines _ITERATOR_DEBUG_LEVEL

/// @def FILESYSTEM_API
/// Precedes each declaration that the library exports. With FILESYSTEM_STATIC the library is static
/// and exports nothing. FILESYSTEM_BUILD is defined while the shared library itself is compiled.

#if defined(_MSC_VER) && !defined(FILESYSTEM_STATIC) && !defined(FILESYSTEM_BUILD)
// The level that the DLL was built with. Strings and vectors are made on one side of the DLL's boundary and
// freed on the other, so a host with another level or without the runtime's DLLs (/MD) is refused.
#ifndef FILESYSTEM_ITERATOR_DEBUG_LEVEL
#define FILESYSTEM_ITERATOR_DEBUG_LEVEL 0
#endif
#if _ITERATOR_DEBUG_LEVEL != FILESYSTEM_ITERATOR_DEBUG_LEVEL
#error Vesk.FileSystem.dll was built with another _ITERATOR_DEBUG_LEVEL: build for release.
#endif
#ifndef _DLL
#error Vesk.FileSystem.dll shares the DLLs of the runtime library with its host: compile with /MD.
#endif
#endif

#if defined(FILESYSTEM_STATIC)
#define FILESYSTEM_API
#elif defined(_WIN32)
#if defined(FILESYSTEM_BUILD)
#define FILESYSTEM_API __declspec(dllexport)
#else
#define FILESYSTEM_API __declspec(dllimport)
#endif
#else
#define FILESYSTEM_API __attribute__((visibility("default")))
#endif

/// @def FILESYSTEM_STAND_IN
/// Precedes the name of a class in the place of one of MFC's.
/// @def FILESYSTEM_STAND_IN_BEGIN
/// Precedes all of these classes.
/// @def FILESYSTEM_STAND_IN_END
/// Follows them.

#if defined(_WIN32)
// MFC's classes have other names, so a function that takes one does not link with a library that takes
// the other. Visual C++ decorates the name of a function with the class that it returns too; g++ does so
// only for a class with a tag.
#define FILESYSTEM_STAND_IN_BEGIN \
  namespace FileSystem {          \
  namespace StandIn {
#define FILESYSTEM_STAND_IN_END                 \
  }                                             \
  }                                             \
  using CString = FileSystem::StandIn::CString; \
  using CStringArray = FileSystem::StandIn::CStringArray;
#if defined(__MINGW32__)
#define FILESYSTEM_STAND_IN __attribute__((abi_tag("StandIn")))
#else
#define FILESYSTEM_STAND_IN
#endif
#else
// Their names are part of the binary interface.
#define FILESYSTEM_STAND_IN_BEGIN
#define FILESYSTEM_STAND_IN_END
#define FILESYSTEM_STAND_IN
#endif
