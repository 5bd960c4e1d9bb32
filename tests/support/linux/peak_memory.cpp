#include "support/linux/peak_memory.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "support/linux/forked_process.h"
#include "support/linux/shared_memory.h"

namespace support {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

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

Peak peakOfCommand(const std::string& command) {
  const pid_t process = fork();
  if (process == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  Peak peak;
  if (process < 0 || wait4(process, &status, 0, &usage) != process) return peak;
  peak.succeeded = status == 0;
  peak.measured = !isUnderValgrind() && !kIsSanitized;
  peak.kibibytes = usage.ru_maxrss;
  return peak;
}

}  // namespace support
