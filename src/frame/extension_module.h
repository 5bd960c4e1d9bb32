#pragma once
// A stand-in for MFC's extension modules, for builds without MFC: the few names
// that the frame calls, with their published contracts.

#include "platform/win32.h"

// What an extension library tells of itself. Zero until it is initialised.
struct AFX_EXTENSION_MODULE {
  BOOL bInitialized;
  HMODULE hModule;
};

// FALSE if there is no module. A second call changes nothing.
BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& record, HMODULE module);

// Deletes the record's objects in the chain.
void AfxTermExtensionModule(AFX_EXTENSION_MODULE& record, BOOL all);

// Puts a module into the process's chain. Belongs to the chain once it is made,
// so it is always made with `new`.
class CDynLinkLibrary {
 public:
  explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& record, BOOL system = FALSE);
  CDynLinkLibrary(const CDynLinkLibrary&) = delete;
  CDynLinkLibrary& operator=(const CDynLinkLibrary&) = delete;
  ~CDynLinkLibrary();

  // The latest object in the chain, and the one before this.
  static CDynLinkLibrary* latest();
  CDynLinkLibrary* previous() const { return previous_; }
  HMODULE module() const { return module_; }

 private:
  HMODULE module_;
  CDynLinkLibrary* previous_;
};
