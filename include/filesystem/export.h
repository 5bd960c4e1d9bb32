#pragma once
/// @file
/// The macro that marks what the library exports. Hosts never define
/// FILESYSTEM_BUILD; the library's own build does.

/// @def FILESYSTEM_API
/// Stands in front of each declaration that the library exports.

#if defined(_WIN32)
#if defined(FILESYSTEM_BUILD)
#define FILESYSTEM_API __declspec(dllexport)
#else
#define FILESYSTEM_API __declspec(dllimport)
#endif
#else
#define FILESYSTEM_API __attribute__((visibility("default")))
#endif
