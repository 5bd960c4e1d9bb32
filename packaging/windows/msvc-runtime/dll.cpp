// The entry point of a DLL.

#include "module.h"

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved);

BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, void* reserved) {
  if (reason == DLL_PROCESS_ATTACH && !vesk_begin_module()) return FALSE;
  const BOOL accepted = DllMain(module, reason, reserved);
  if (reason == DLL_PROCESS_DETACH || (reason == DLL_PROCESS_ATTACH && accepted == FALSE)) {
    vesk_end_module();
  }
  return accepted;
}

}  // extern "C"
