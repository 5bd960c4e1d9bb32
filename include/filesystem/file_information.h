#pragma once
/// @file
/// The record of one enumerated file or folder.

#include <cstdint>

namespace FileSystem {

/// A moment as two halves of an unsigned 64-bit count of 100-nanosecond units
/// since 1601-01-01 UTC; laid out as the platform's `FILETIME`.
struct FILE_TIME {
  std::uint32_t dwLowDateTime;   ///< low half
  std::uint32_t dwHighDateTime;  ///< high half
};

/// One enumerated file or folder; laid out as the platform's find record
/// `WIN32_FIND_DATAA`, field for field.
struct FILE_INFORMATION {
  std::uint32_t dwFileAttributes;  ///< attribute flags; 0x10 marks a folder
  FILE_TIME ftCreationTime;        ///< time of creation
  FILE_TIME ftLastAccessTime;      ///< time of the last access
  FILE_TIME ftLastWriteTime;       ///< time of the last write
  std::uint32_t nFileSizeHigh;     ///< upper half of the size in bytes
  std::uint32_t nFileSizeLow;      ///< lower half of the size in bytes
  std::uint32_t dwReserved0;       ///< as the platform delivers it
  std::uint32_t dwReserved1;       ///< as the platform delivers it
  /// Bare name, or, in records of a recursive folder walk, the path relative to
  /// the start folder; zero-terminated, cut at 259 bytes.
  char cFileName[260];
  char cAlternateFileName[14];  ///< short name, empty if there is none
};

}  // namespace FileSystem
