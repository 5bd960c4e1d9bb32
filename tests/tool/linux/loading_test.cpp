// Loading and unloading the library, by a program that does not link with it.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>

#include "support/linux/left_over.h"
#include "support/linux/valgrind.h"

namespace {

std::size_t residentPages() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident;
}

TEST(Loading, AThousandTimesLeavesNothing) {
  const auto loadAndUse = [] {
    void* const library = dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto fileExists =
        reinterpret_cast<int (*)(const char*)>(dlsym(library, "_ZN10FileSystem10FileExistsEPKc"));
    const auto start = reinterpret_cast<void (*)()>(dlsym(library, "InitFileSystemDLL"));
    ASSERT_NE(fileExists, nullptr);
    ASSERT_NE(start, nullptr);
    EXPECT_NE(fileExists("/proc/self/exe"), 0);
    start();
    EXPECT_NE(fileExists("/proc/self/exe"), 0);
    EXPECT_EQ(dlclose(library), 0);
  };
  for (int i = 0; i < 100; ++i) loadAndUse();
  EXPECT_EQ(dlopen(VESK_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
  const std::size_t pages = residentPages();
  const auto descriptors = support::openDescriptors();
  for (int i = 0; i < 1000; ++i) loadAndUse();
  EXPECT_EQ(support::openDescriptors(), descriptors);
  // The books of a sanitizer or of valgrind grow with every load.
#if defined(__SANITIZE_ADDRESS__)
  constexpr bool kSanitized = true;
#else
  constexpr bool kSanitized = false;
#endif
  constexpr std::size_t kSlack = 100;
  if (!kSanitized && !support::underValgrind()) {
    EXPECT_LT(residentPages(), pages + kSlack);
  }
}

}  // namespace
