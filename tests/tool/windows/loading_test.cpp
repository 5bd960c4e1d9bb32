// Loads and unloads the library from a program that is not linked with it.

#include <gtest/gtest.h>

#include "platform/win32.h"

namespace {

template <typename Function>
Function entry(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// VESK_FILE_EXISTS is the name of FileExists as the compiler decorates it.
TEST(Loading, TwoHundredTimesLeaveNothing) {
  constexpr int kFirst = 20;
  DWORD handles = 0;
  for (int i = 0; i < kFirst + 200; ++i) {
    if (i == kFirst) GetProcessHandleCount(GetCurrentProcess(), &handles);
    const HMODULE library = LoadLibraryA(VESK_LIBRARY);
    ASSERT_NE(library, nullptr) << GetLastError();
    entry<void (*)()>(library, "InitFileSystemDLL")();
    const auto fileExists = entry<int (*)(const char*)>(library, VESK_FILE_EXISTS);
    EXPECT_NE(fileExists(VESK_LIBRARY), 0);
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetModuleHandleA("Vesk.FileSystem.dll"), nullptr);
  }
  DWORD now = 0;
  GetProcessHandleCount(GetCurrentProcess(), &now);
  EXPECT_EQ(now, handles);
}

}  // namespace
