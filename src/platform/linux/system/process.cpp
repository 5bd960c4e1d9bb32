// The process and its threads.

#include <unistd.h>

#include "platform/linux/win32_linux.h"

BOOL DisableThreadLibraryCalls(HMODULE) { return TRUE; }

DWORD GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }
