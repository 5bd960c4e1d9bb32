// Loads and unloads the library from a program that is not linked with it.

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace {

template <typename Function>
Function entry(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

TEST(Loading, TwoHundredTimesLeaveNothing) {
  const auto loadAndUse = [] {
    const HMODULE library = LoadLibraryA(VESK_LIBRARY);
    ASSERT_NE(library, nullptr) << GetLastError();
    const auto fileExists = entry<int (*)(const char*)>(library, "_ZN10FileSystem10FileExistsEPKc");
    const auto start = entry<void (*)()>(library, "InitFileSystemDLL");
    ASSERT_NE(fileExists, nullptr);
    ASSERT_NE(start, nullptr);
    EXPECT_NE(fileExists(VESK_LIBRARY), 0);
    start();
    EXPECT_NE(fileExists(VESK_LIBRARY), 0);
    EXPECT_TRUE(FreeLibrary(library));
  };
  for (int i = 0; i < 20; ++i) loadAndUse();
  EXPECT_EQ(GetModuleHandleA("Vesk.FileSystem.dll"), nullptr);
  DWORD handles = 0;
  GetProcessHandleCount(GetCurrentProcess(), &handles);
  for (int i = 0; i < 200; ++i) loadAndUse();
  DWORD now = 0;
  GetProcessHandleCount(GetCurrentProcess(), &now);
  EXPECT_EQ(now, handles);
}

}  // namespace
