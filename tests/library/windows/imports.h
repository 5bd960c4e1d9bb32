#pragma once
// The functions that the library imports from Windows, which a test can replace.

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "platform/win32.h"

// Replaces imports of the library's DLL as long as it lives.
class ReplacedImports {
 public:
  ReplacedImports() = default;
  ReplacedImports(const ReplacedImports&) = delete;
  ReplacedImports& operator=(const ReplacedImports&) = delete;
  ~ReplacedImports() {
    for (const auto& [slot, function] : replaced_) set(slot, function);
  }

  template <typename Function>
  void replace(const char* name, Function* function) {
    void** const slot = find(name);
    ASSERT_NE(slot, nullptr) << name;
    replaced_.emplace_back(slot, *slot);
    set(slot, reinterpret_cast<void*>(function));
  }

 private:
  // Returns the address that the calls of a function go through, or null.
  static void** find(const char* name) {
    auto* const base = reinterpret_cast<unsigned char*>(GetModuleHandleA("Vesk.FileSystem.dll"));
    if (base == nullptr) return nullptr;
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* library =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         library->FirstThunk != 0; ++library) {
      auto* imported =
          reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
      auto* slot = reinterpret_cast<void**>(base + library->FirstThunk);
      for (; imported->u1.AddressOfData != 0; ++imported, ++slot) {
        if (IMAGE_SNAP_BY_ORDINAL(imported->u1.Ordinal)) continue;
        const auto* const byName =
            reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + imported->u1.AddressOfData);
        if (std::strcmp(byName->Name, name) == 0) return slot;
      }
    }
    return nullptr;
  }
  static void set(void** slot, void* function) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = function;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
  }

  std::vector<std::pair<void**, void*>> replaced_;
};
