// Globally unique identifiers.

#include <sys/random.h>

#include "platform/linux/win32_linux.h"

// A random UUID (RFC 4122, version 4).
HRESULT CoCreateGuid(GUID* guid) {
  constexpr HRESULT kOk = 0;
  constexpr HRESULT kFailed = static_cast<HRESULT>(0x80004005);
  if (getrandom(guid, sizeof(*guid), 0) != static_cast<ssize_t>(sizeof(*guid))) return kFailed;
  guid->Data3 = static_cast<WORD>((guid->Data3 & 0x0FFF) | 0x4000);
  guid->Data4[0] = static_cast<BYTE>((guid->Data4[0] & 0x3F) | 0x80);
  return kOk;
}
