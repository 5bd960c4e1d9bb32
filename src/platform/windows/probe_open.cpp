#include "platform/probe_open.h"

#include "platform/unique_handle.h"

bool platform::probeOpen(const char* path, DWORD access, DWORD share) {
  return static_cast<bool>(FileHandle(
      CreateFileA(path, access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

bool platform::probeFound(HANDLE, const char* path) {
  return probeOpen(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
}
