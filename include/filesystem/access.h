#pragma once
/// @file
/// Access masks of AllowedAccess, TestOpen, TestCreate and ZipArchive. The values are those of
/// Win32's `GENERIC_READ` and `GENERIC_WRITE`.
///
/// @code
/// if (FileSystem::TestOpen("C:\\data\\log.txt", FileSystem::kAccessReadWrite) != 0) { ... }
/// @endcode

namespace FileSystem {

inline constexpr unsigned int kAccessNone = 0;                                ///< no access
inline constexpr unsigned int kAccessRead = 0x80000000;                       ///< `GENERIC_READ`
inline constexpr unsigned int kAccessWrite = 0x40000000;                      ///< `GENERIC_WRITE`
inline constexpr unsigned int kAccessReadWrite = kAccessRead | kAccessWrite;  ///< both

}  // namespace FileSystem
