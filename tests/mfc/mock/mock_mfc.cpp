#include "mfc/mock_mfc.h"

#include <new>

MockMfc& mockMfc() {
  static MockMfc mock;
  return mock;
}

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE hModule) {
  MockMfc& mock = mockMfc();
  mock.steps.emplace_back("init");
  mock.record = &state;
  mock.module = hModule;
  // MFC's truth values need not be 1.
  return mock.refuses ? FALSE : 2;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL bAll) {
  mockMfc().steps.push_back("term " + std::to_string(bAll));
  mockMfc().record = &state;
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL bSystem) {
  mockMfc().steps.push_back("library " + std::to_string(bSystem));
  mockMfc().record = &state;
}

void* CDynLinkLibrary::operator new(std::size_t size) {
  switch (mockMfc().allocation) {
    case MockMfc::Allocation::Throws:
      throw std::bad_alloc();
    case MockMfc::Allocation::ReturnsNull:
      return nullptr;
    default:
      return ::operator new(size);
  }
}

void CDynLinkLibrary::operator delete(void* memory) { ::operator delete(memory); }
