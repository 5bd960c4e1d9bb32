#pragma once
// The access rights that decide how a file is opened and shared.

#include "platform/linux/win32_linux.h"

namespace platform::native {

// Replaces the generic rights by the specific ones that they include. Rights that
// open and share nothing, such as that to read the attributes, are dropped.
constexpr DWORD specificRights(DWORD access) {
  constexpr DWORD kWrite = FILE_WRITE_DATA | FILE_APPEND_DATA;
  constexpr DWORD kAll = FILE_READ_DATA | kWrite | FILE_EXECUTE | DELETE;
  DWORD rights = access & kAll;
  if ((access & GENERIC_READ) != 0) rights |= FILE_READ_DATA;
  if ((access & GENERIC_WRITE) != 0) rights |= kWrite;
  if ((access & GENERIC_EXECUTE) != 0) rights |= FILE_EXECUTE;
  if ((access & GENERIC_ALL) != 0) rights |= kAll;
  return rights;
}

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Executing a file counts as reading it.
constexpr bool reads(DWORD rights) { return (rights & (FILE_READ_DATA | FILE_EXECUTE)) != 0; }

constexpr bool writes(DWORD rights) { return (rights & (FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0; }

// True if every write goes to the end of the file.
constexpr bool appendsOnly(DWORD rights) {
  return (rights & (FILE_WRITE_DATA | FILE_APPEND_DATA)) == FILE_APPEND_DATA;
}

}  // namespace platform::native
