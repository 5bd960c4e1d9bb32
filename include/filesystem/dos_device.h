#pragma once
/// @file
/// Drives and shares on Linux, where the library provides this function of Win32. On Windows the
/// system provides it, and hosts include `<windows.h>` instead of this header.
///
/// @code
/// DefineDosDeviceA(0, "T:", "/data/t");                  // T:\a.txt is /data/t/a.txt
/// DefineDosDeviceA(0, "UNC\\srv\\share", "/mnt/share");  // \\srv\share\a.txt is /mnt/share/a.txt
/// @endcode
/// @see https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-definedosdevicew

#include <filesystem/export.h>

/// Maps a drive or share to a folder, or removes a mapping. The mapping belongs to the process and
/// holds for all its threads. Without any, `C:` is the root of the file system.
/// @param flags  0 maps; 2 (`DDD_REMOVE_DEFINITION`) removes the last mapping of the device, or the
///               last one to `target` if that is not null, and the one before it holds again; 1
///               (`DDD_RAW_TARGET_PATH`) has no effect
/// @param device a drive such as `T:`, or a share such as `UNC\srv\share`; letter case is ignored
/// @param target the folder, an absolute path in Linux' or Windows' form, which need not exist yet
/// @return non-zero on success; 0 if the device is neither a drive nor a share, if the target is
///         missing or not absolute, or if there is nothing to remove
extern "C" FILESYSTEM_API int DefineDosDeviceA(unsigned int flags, const char* device,
                                               const char* target);
