// What runs when a process loads and unloads the library, and the start-up
// export.

#include <filesystem/frame.h>

#include "frame/extension_module.h"

namespace {

AFX_EXTENSION_MODULE extensionModule{};

}  // namespace

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

// Not kept: the object belongs to the chain.
void InitFileSystemDLL(void) { new CDynLinkLibrary(extensionModule, FALSE); }
