// Loads and unloads the library from a program that is not linked with it.

#include <dlfcn.h>
#include <filesystem/dos_device.h>
#include <malloc.h>

#include "support/linux/left_over.h"
#include "support/sanitized.h"
#include "support/temporary_folder.h"

namespace {

template <typename Function>
Function* find(void* library, const char* name) {
  const auto function = reinterpret_cast<Function*>(dlsym(library, name));
  EXPECT_NE(function, nullptr) << name;
  return function;
}

void* load() {
  void* const library = dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  EXPECT_NE(library, nullptr) << dlerror();
  return library;
}

// Unloads the library and checks that nothing keeps it.
void unload(void* library) {
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_EQ(dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

void loadAndUse() {
  void* const library = load();
  const auto fileExists = find<int(const char*)>(library, "_ZN10FileSystem10FileExistsEPKc");
  EXPECT_NE(fileExists("/proc/self/exe"), 0);
  find<void()>(library, "InitFileSystemDLL")();
  const auto define = find<decltype(DefineDosDeviceA)>(library, "DefineDosDeviceA");
  EXPECT_NE(define(0, "T:", "/proc"), 0);
  EXPECT_NE(fileExists("T:\\self\\exe"), 0);
  constexpr unsigned kRemove = 2;
  EXPECT_NE(define(kRemove, "T:", nullptr), 0);
  unload(library);
}

TEST(Loading, AThousandTimesLeavesNothing) {
  // Sanitizers and valgrind report leaks themselves, and nothing here.
  constexpr int kRounds = support::kSanitized ? 100 : 1000;
  for (int i = 0; i < kRounds / 10; ++i) loadAndUse();
  const std::size_t allocated = mallinfo2().uordblks;
  const auto descriptors = support::openDescriptors();
  for (int i = 0; i < kRounds; ++i) loadAndUse();
  EXPECT_EQ(support::openDescriptors(), descriptors);
  constexpr std::size_t kSlack = 10000;
  EXPECT_LT(mallinfo2().uordblks, allocated + kSlack);
}

TEST(Loading, ArchivesDoNotKeepTheLibrary) {
  const support::TemporaryFolder folder;
  support::writeFile(folder.file("in/text"), std::string(10000, 'x'));
  const std::string zip = folder.file("a.zip");
  void* const library = load();
  using TwoPaths = bool(const char*, const char*);
  const auto pack = find<TwoPaths>(library, "_Z14FRT_ZIP_FOLDERPKcS0_");
  const auto unpack = find<TwoPaths>(library, "_Z14FRT_UNZIP_FILEPKcS0_");
  EXPECT_TRUE(pack(folder.file("in").c_str(), zip.c_str()));
  EXPECT_TRUE(unpack(zip.c_str(), folder.file("out").c_str()));
  unload(library);
}

}  // namespace
