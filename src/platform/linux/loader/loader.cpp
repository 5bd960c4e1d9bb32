// Calls the library's entry routine when a process loads and unloads the
// library, as Windows' loader does. Linked into the library alone, not into
// other programs on the platform layer.

#include <dlfcn.h>

#include <cstdlib>

#include "platform/linux/win32_linux.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved);

namespace {

// The address at which the library is loaded identifies the module.
HINSTANCE ownModule() {
  Dl_info information{};
  return dladdr(reinterpret_cast<const void*>(&ownModule), &information) != 0
             ? information.dli_fbase
             : nullptr;
}

// A load cannot be refused here: the process ends instead.
__attribute__((constructor)) void load() {
  if (DllMain(ownModule(), DLL_PROCESS_ATTACH, nullptr) == FALSE) std::abort();
}

__attribute__((destructor)) void unload() { DllMain(ownModule(), DLL_PROCESS_DETACH, nullptr); }

}  // namespace
