// The entry routine of the shared library, which a static one does not have.

#include "frame/extension_module.h"

#if defined(FILESYSTEM_MFC)
// MFC wants this header in one source of a module.
#include <afxdllx.h>
#endif

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      if (AfxInitExtensionModule(extensionModule, module) == FALSE) return FALSE;
      DisableThreadLibraryCalls(module);
      return TRUE;
    case DLL_PROCESS_DETACH:
      AfxTermExtensionModule(extensionModule, FALSE);
      return TRUE;
    default:
      return TRUE;
  }
}
