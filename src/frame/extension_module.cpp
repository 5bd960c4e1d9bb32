#include "frame/extension_module.h"

namespace {

CDynLinkLibrary* chain = nullptr;

}  // namespace

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& record, HMODULE module) {
  if (module == nullptr) return FALSE;
  if (record.bInitialized == FALSE) record = {.bInitialized = TRUE, .hModule = module};
  return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& record, BOOL) {
  CDynLinkLibrary* library = chain;
  while (library != nullptr) {
    CDynLinkLibrary* const previous = library->previous();
    if (library->module() == record.hModule) delete library;
    library = previous;
  }
  record = {};
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& record, BOOL)
    : module_(record.hModule), previous_(chain) {
  chain = this;
}

CDynLinkLibrary::~CDynLinkLibrary() {
  CDynLinkLibrary** link = &chain;
  while (*link != this) link = &(*link)->previous_;
  *link = previous_;
}

CDynLinkLibrary* CDynLinkLibrary::latest() { return chain; }
