#pragma once
/// @file
/// The record of an enumerated file or folder.
///
/// @code
/// std::uint64_t sizeOf(const FileSystem::FILE_INFORMATION& file) {
///   return std::uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
/// }
/// @endcode

#include <cstdint>

namespace FileSystem {

/// A time as an unsigned 64-bit count of 100-nanosecond units since 1601-01-01 UTC, in two halves.
/// Has the layout of Win32's `FILETIME`.
struct FILE_TIME {
  std::uint32_t dwLowDateTime;   ///< low half
  std::uint32_t dwHighDateTime;  ///< high half
};

/// An enumerated file or folder. Has the layout of Win32's `WIN32_FIND_DATAA`.
struct FILE_INFORMATION {
  std::uint32_t dwFileAttributes;  ///< attribute flags; 0x10 is set for a folder
  FILE_TIME ftCreationTime;        ///< time of creation
  FILE_TIME ftLastAccessTime;      ///< time of the last access
  FILE_TIME ftLastWriteTime;       ///< time of the last write
  std::uint32_t nFileSizeHigh;     ///< upper half of the size in bytes
  std::uint32_t nFileSizeLow;      ///< lower half of the size in bytes
  std::uint32_t dwReserved0;       ///< as the platform returns it
  std::uint32_t dwReserved1;       ///< as the platform returns it
  /// Name without folder; in records of EnumFolders and EnumFoldersEx the path relative to the
  /// start folder. Zero-terminated, cut at 259 bytes.
  char cFileName[260];
  char cAlternateFileName[14];  ///< short name, empty if there is none
};

}  // namespace FileSystem
