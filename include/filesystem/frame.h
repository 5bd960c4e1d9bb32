#pragma once
/// @file
/// The library's start-up export.

#include <filesystem/export.h>

/// Puts the library into the host's chain of MFC extension modules.
///
/// Only a host that is built on MFC and wants its resources looked up in the
/// library calls this, once, after the load. No other export depends on it. On
/// a platform without MFC there is no chain, and the call does nothing.
extern "C" FILESYSTEM_API void InitFileSystemDLL(void);
