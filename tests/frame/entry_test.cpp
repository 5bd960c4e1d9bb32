// Tests the entry routine of the shared library, and the start-up function.

#include <filesystem/frame.h>
#include <gtest/gtest.h>

#include "frame/extension_module.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved);

namespace {

// Any address can be a module handle.
int address = 0;
const HINSTANCE kModule = reinterpret_cast<HINSTANCE>(&address);

TEST(Entry, ChainLivesFromLoadToUnload) {
  EXPECT_EQ(DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr), FALSE);
  for (int round = 0; round < 2; ++round) {
    ASSERT_NE(DllMain(kModule, DLL_PROCESS_ATTACH, nullptr), FALSE);
    EXPECT_EQ(CDynLinkLibrary::latest(), nullptr);
    InitFileSystemDLL();
    InitFileSystemDLL();
    const CDynLinkLibrary* const second = CDynLinkLibrary::latest();
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->module(), kModule);
    ASSERT_NE(second->previous(), nullptr);
    EXPECT_EQ(second->previous()->previous(), nullptr);
    // Thread notifications change nothing.
    EXPECT_NE(DllMain(kModule, 2, nullptr), FALSE);
    EXPECT_EQ(CDynLinkLibrary::latest(), second);
    EXPECT_NE(DllMain(kModule, DLL_PROCESS_DETACH, nullptr), FALSE);
    EXPECT_EQ(CDynLinkLibrary::latest(), nullptr);
  }
  EXPECT_NE(DllMain(kModule, DLL_PROCESS_DETACH, nullptr), FALSE);
}

TEST(Entry, UnloadingKeepsObjectsOfOtherModules) {
  AFX_EXTENSION_MODULE other{};
  int otherAddress = 0;
  ASSERT_NE(AfxInitExtensionModule(other, reinterpret_cast<HMODULE>(&otherAddress)), FALSE);
  const CDynLinkLibrary* const theirs = new CDynLinkLibrary(other);
  DllMain(kModule, DLL_PROCESS_ATTACH, nullptr);
  InitFileSystemDLL();
  DllMain(kModule, DLL_PROCESS_DETACH, nullptr);
  EXPECT_EQ(CDynLinkLibrary::latest(), theirs);
  AfxTermExtensionModule(other, FALSE);
  EXPECT_EQ(CDynLinkLibrary::latest(), nullptr);
}

}  // namespace
