// The steps that an extension module owes MFC.

#include <gtest/gtest.h>

#include <new>

#include "mfc/mock_mfc.h"
#include "support/temporary_folder.h"

namespace {

BOOL recordDisabling(HMODULE) {
  mockMfc().steps.emplace_back("disable");
  return FALSE;
}

}  // namespace

// The routine itself, so that its call of the system is recorded too.
#define DisableThreadLibraryCalls recordDisabling
#include "frame/entry.cpp"
#undef DisableThreadLibraryCalls

AFX_EXTENSION_MODULE extensionModule{};

namespace {

using Steps = std::vector<std::string>;
using StartUp = void (*)();

class MfcEntry : public testing::Test {
 protected:
  MfcEntry() { mockMfc() = {}; }
  ~MfcEntry() override { mockMfc() = {}; }
};

TEST_F(MfcEntry, TakesTheStepsOfEachReason) {
  int address = 0;
  const HINSTANCE module = reinterpret_cast<HINSTANCE>(&address);
  const struct {
    DWORD reason;
    bool refuses;
    BOOL result;
    Steps steps;
  } cases[] = {
      {DLL_PROCESS_ATTACH, false, 1, {"init", "disable"}},
      {DLL_PROCESS_ATTACH, true, 0, {"init"}},
      {DLL_PROCESS_DETACH, false, 1, {"term 0"}},
      {DLL_THREAD_ATTACH, false, 1, {}},
      {DLL_THREAD_DETACH, false, 1, {}},
  };
  for (const auto& c : cases) {
    mockMfc() = {};
    mockMfc().refuses = c.refuses;
    EXPECT_EQ(DllMain(module, c.reason, nullptr), c.result) << c.reason;
    EXPECT_EQ(mockMfc().steps, c.steps) << c.reason;
    EXPECT_EQ(mockMfc().record, c.steps.empty() ? nullptr : &extensionModule) << c.reason;
    EXPECT_EQ(mockMfc().module, c.reason == DLL_PROCESS_ATTACH ? module : nullptr) << c.reason;
  }
}

// A module of its own, since the program has loaded the library.
class MfcLoading : public MfcEntry {
 protected:
  MfcLoading() { CopyFileA(VESK_MFC_LIBRARY, copy_.c_str(), TRUE); }

  support::TemporaryFolder folder_;
  std::string copy_ = folder_.file("Copy.dll");
};

TEST_F(MfcLoading, InitialisesAndTerminatesOneRecord) {
  const HMODULE module = LoadLibraryA(copy_.c_str());
  ASSERT_NE(module, nullptr) << GetLastError();
  EXPECT_EQ(mockMfc().module, module);
  const AFX_EXTENSION_MODULE* const record = mockMfc().record;
  const StartUp startUp = reinterpret_cast<StartUp>(
      reinterpret_cast<void*>(GetProcAddress(module, "InitFileSystemDLL")));
  startUp();
  EXPECT_EQ(mockMfc().record, record);
  startUp();
  FreeLibrary(module);
  EXPECT_EQ(mockMfc().record, record);
  EXPECT_EQ(mockMfc().steps, (Steps{"init", "library 0", "library 0", "term 0"}));
}

TEST_F(MfcLoading, FailsIfMfcRefuses) {
  mockMfc().refuses = true;
  EXPECT_EQ(LoadLibraryA(copy_.c_str()), nullptr);
}

TEST_F(MfcLoading, StartUpWithoutMemoryAddsNothing) {
  const HMODULE module = LoadLibraryA(copy_.c_str());
  ASSERT_NE(module, nullptr);
  const StartUp startUp = reinterpret_cast<StartUp>(
      reinterpret_cast<void*>(GetProcAddress(module, "InitFileSystemDLL")));
  mockMfc().allocation = MockMfc::Allocation::ReturnsNull;
  startUp();
  mockMfc().allocation = MockMfc::Allocation::Throws;
  EXPECT_THROW(startUp(), std::bad_alloc);
  EXPECT_EQ(mockMfc().steps, Steps{"init"});
  FreeLibrary(module);
}

}  // namespace
