#pragma once
// In the place of MFC's main header: what Microsoft documents of extension modules.

#include <afx.h>

#if defined(MOCK_MFC_BUILD)
#define MOCK_MFC __declspec(dllexport)
#else
#define MOCK_MFC __declspec(dllimport)
#endif

struct AFX_EXTENSION_MODULE {
  BOOL bInitialized;
  HMODULE hModule;
  HMODULE hResource;
  void* pFirstSharedClass;
  void* pFirstSharedFactory;
};

MOCK_MFC BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE hModule);
MOCK_MFC void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL bAll = FALSE);

class CDynLinkLibrary : public CObject {
 public:
  MOCK_MFC explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL bSystem = FALSE);
  MOCK_MFC void* operator new(size_t size);
  MOCK_MFC void operator delete(void* memory);
};
