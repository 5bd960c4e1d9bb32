// Loads and unloads the library from a program that is not linked with it.

#include <dlfcn.h>
#include <filesystem/dos_device.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/linux/left_over.h"
#include "support/linux/valgrind.h"
#include "support/temporary_folder.h"

namespace {

std::size_t residentPages() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident;
}

template <typename Function>
Function* find(void* library, const char* name) {
  const auto function = reinterpret_cast<Function*>(dlsym(library, name));
  EXPECT_NE(function, nullptr) << name;
  return function;
}

// Uses both directions of the codec, and encryption.
void useArchives(void* library, const support::TemporaryFolder& folder) {
  using TwoPaths = bool(const char*, const char*);
  const std::string in = folder.file("in");
  const std::string zip = folder.file("a.zip");
  EXPECT_TRUE(find<TwoPaths>(library, "_Z14FRT_ZIP_FOLDERPKcS0_")(in.c_str(), zip.c_str()));
  EXPECT_TRUE(
      find<TwoPaths>(library, "_Z14FRT_UNZIP_FILEPKcS0_")(zip.c_str(), folder.file("out").c_str()));
  void* archive[8] = {};  // more than a ZipArchive needs
  find<void(void*)>(library, "_ZN10ZipArchiveC1Ev")(archive);
  find<void(void*, const char*)>(library, "_ZN10ZipArchive8passwordEPKc")(archive, "secret");
  find<int(void*, const char*, int)>(library, "_ZN10ZipArchive6createEPKci")(archive, zip.c_str(),
                                                                             1);
  EXPECT_EQ(find<int(void*, const char*, const char*, const char*, int)>(
                library, "_ZN10ZipArchive6insertEPKcS1_S1_i")(archive, (in + "/text").c_str(), "e",
                                                              "", 0),
            1);
  find<void(void*)>(library, "_ZN10ZipArchiveD1Ev")(archive);
}

TEST(Loading, AThousandTimesLeavesNothing) {
  const support::TemporaryFolder folder;
  support::writeFile(folder.file("in/text"), std::string(10000, 'x'));
  const auto loadAndUse = [&](bool withArchives) {
    void* const library = dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    if (withArchives) useArchives(library, folder);
    const auto fileExists = find<int(const char*)>(library, "_ZN10FileSystem10FileExistsEPKc");
    const auto start = find<void()>(library, "InitFileSystemDLL");
    EXPECT_NE(fileExists("/proc/self/exe"), 0);
    start();
    EXPECT_NE(fileExists("/proc/self/exe"), 0);
    const auto defineDevice =
        reinterpret_cast<decltype(&DefineDosDeviceA)>(dlsym(library, "DefineDosDeviceA"));
    ASSERT_NE(defineDevice, nullptr);
    EXPECT_NE(defineDevice(0, "T:", "/proc"), 0);
    EXPECT_NE(fileExists("T:\\self\\exe"), 0);
    EXPECT_NE(defineDevice(2, "T:", nullptr), 0);
    EXPECT_EQ(dlclose(library), 0);
  };
  loadAndUse(true);
  EXPECT_EQ(dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
  for (int i = 0; i < 100; ++i) loadAndUse(false);
  EXPECT_EQ(dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
  const std::size_t pages = residentPages();
  const std::size_t allocated = mallinfo2().uordblks;
  const auto descriptors = support::openDescriptors();
  for (int i = 0; i < 1000; ++i) loadAndUse(false);
  EXPECT_EQ(support::openDescriptors(), descriptors);
  // A sanitizer or valgrind keeps records, which grow with every load.
#if defined(__SANITIZE_ADDRESS__)
  constexpr bool kSanitized = true;
#else
  constexpr bool kSanitized = false;
#endif
  constexpr std::size_t kSlack = 100;
  constexpr std::size_t kSlackBytes = 10000;
  if (!kSanitized && !support::underValgrind()) {
    EXPECT_LT(residentPages(), pages + kSlack);
    EXPECT_LT(mallinfo2().uordblks, allocated + kSlackBytes);
  }
}

}  // namespace
