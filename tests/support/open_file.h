#pragma once
// Files that another program has open.

#include <string>

#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace support {

// Opens an existing file, exclusively unless `share` permits more.
inline platform::FileHandle openFile(const std::string& path, DWORD access = GENERIC_READ,
                                     DWORD share = 0, DWORD disposition = OPEN_EXISTING) {
  return platform::FileHandle(
      CreateFileA(path.c_str(), access, share, nullptr, disposition, 0, nullptr));
}

}  // namespace support
