// The start-up export.

#include <filesystem/frame.h>

#include "frame/extension_module.h"

AFX_EXTENSION_MODULE extensionModule{};

// The chain owns the new object.
void InitFileSystemDLL(void) { new CDynLinkLibrary(extensionModule, FALSE); }
