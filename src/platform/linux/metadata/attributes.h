#pragma once
// Win32 attributes and times from the status of a file.

#include <sys/stat.h>

#include "platform/file_identity.h"
#include "platform/linux/metadata/file_time.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {

inline constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

// True if no one may write. Here that binds the superuser too.
inline bool isReadOnly(mode_t mode) { return (mode & kAnyWrite) == 0; }

inline bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

inline FileIdentity identityOf(const struct stat& status) {
  return {.volume = status.st_dev, .index = status.st_ino};
}

// Returns the attributes of a file or folder. `name` is its last component. With
// `isLink`, `mode` is that of the file which a link of that name leads to.
DWORD attributesOf(const char* name, mode_t mode, bool isLink);

inline FILETIME fileTimeOf(const statx_timestamp& time) {
  return fileTimeOf(time.tv_sec, time.tv_nsec);
}

// Sets the fields that WIN32_FILE_ATTRIBUTE_DATA and WIN32_FIND_DATAA have in
// common.
template <typename Data>
void fillData(Data& data, const struct statx& status, DWORD attributes) {
  const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
  data.dwFileAttributes = attributes;
  data.ftCreationTime = fileTimeOf(hasBirth ? status.stx_btime : status.stx_mtime);
  data.ftLastAccessTime = fileTimeOf(status.stx_atime);
  data.ftLastWriteTime = fileTimeOf(status.stx_mtime);
  const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const std::uint64_t size = isFolder ? 0 : status.stx_size;
  data.nFileSizeHigh = static_cast<DWORD>(size >> 32);
  data.nFileSizeLow = static_cast<DWORD>(size);
}

}  // namespace platform::native
