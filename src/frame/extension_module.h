#pragma once
// MFC's extension modules; in builds without MFC the few names that the frame calls, with their
// published contracts.

#if defined(FILESYSTEM_MFC)
#include <afxwin.h>
#else

#include "platform/win32.h"

// Describes an extension library. All zero until it is initialised.
struct AFX_EXTENSION_MODULE {
  BOOL bInitialized;
  HMODULE hModule;
};

// Initialises `record` for `module`. Returns FALSE if `module` is null. A second
// call changes nothing.
BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& record, HMODULE module);

// Deletes the objects of `record` from the chain.
void AfxTermExtensionModule(AFX_EXTENSION_MODULE& record, BOOL all);

// Adds a module to the process's chain. The chain owns the object, so create it
// with `new`.
class CDynLinkLibrary {
 public:
  explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& record, BOOL system = FALSE);
  CDynLinkLibrary(const CDynLinkLibrary&) = delete;
  CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;
  ~CDynLinkLibrary();

  // Returns the newest object in the chain, or null.
  static CDynLinkLibrary* latest();
  // Returns the object added before this one, or null.
  CDynLinkLibrary* previous() const { return previous_; }
  HMODULE module() const { return module_; }

 private:
  HMODULE module_;
  CDynLinkLibrary* previous_;
};

#endif

// The record of this library. The entry routine fills it; in a static library
// it stays zero.
extern AFX_EXTENSION_MODULE extensionModule;
