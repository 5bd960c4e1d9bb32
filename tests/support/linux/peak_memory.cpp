#include "support/linux/peak_memory.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "support/linux/forked_process.h"
#include "support/linux/shared_memory.h"

namespace support {
namespace {

// Reports whether valgrind runs the process, whose resident memory then says nothing.
bool isUnderValgrind() {
  const char* const preloaded = std::getenv("LD_PRELOAD");
  return preloaded != nullptr && std::strstr(preloaded, "vgpreload") != nullptr;
}

// Returns the largest resident memory since the last reset, in KiB; 0 if it is not
// known.
long largestResident() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kibibytes = 0;
    if (word == "VmHWM:" && status >> kibibytes) return kibibytes;
  }
  return 0;
}

}  // namespace

Peak peakOf(const std::function<bool()>& work) {
  const SharedMemory<Peak> peak;
  ForkedProcess process([&](const auto&) {
    malloc_trim(0);
    // Makes the largest resident memory the present one.
    std::ofstream reset("/proc/self/clear_refs");
    if (!(reset << 5 << std::flush)) return 0;
    const long before = largestResident();
    peak->succeeded = work();
    peak->kibibytes = largestResident() - before;
    peak->measured = before != 0 && !isUnderValgrind();
    return 0;
  });
  process.wait();
  return *peak;
}

}  // namespace support
