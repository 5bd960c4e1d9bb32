#pragma once
/// @file
/// The start-up function of the library, which most hosts never call.

#include <filesystem/export.h>

/// Adds the library to the chain of MFC extension modules, where MFC looks up resources.
///
/// A host that is built on MFC and wants that calls this once after the library is loaded. No other
/// function depends on it. In a library that was built without VESK_MFC the chain is a list of its own
/// without effect. Each call adds an object to it, which is deleted when the shared library is
/// unloaded.
///
/// @code
/// InitFileSystemDLL();
/// @endcode
extern "C" FILESYSTEM_API void InitFileSystemDLL(void);
