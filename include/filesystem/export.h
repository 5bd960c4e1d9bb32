#pragma once
/// @file
/// The macro that marks the exported declarations. The build of the library and its CMake and
/// pkg-config packages define the macros that it depends on; hosts need not.

/// @def FILESYSTEM_API
/// Precedes each declaration that the library exports. With FILESYSTEM_STATIC the library is static
/// and exports nothing. FILESYSTEM_BUILD is defined while the shared library itself is compiled.

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
