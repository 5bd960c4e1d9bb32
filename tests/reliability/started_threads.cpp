#include "started_threads.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>

namespace {

std::atomic<int> started = 0;

}  // namespace

int startedThreads() { return started; }

// The name in the place of the C library's.
extern "C" __attribute__((visibility("default"))) int countedCreate(
    pthread_t* thread, const pthread_attr_t* attributes, void* (*work)(void*),
    void* argument) __asm__("pthread_create");

int countedCreate(pthread_t* thread, const pthread_attr_t* attributes, void* (*work)(void*),
                  void* argument) {
  static const auto real =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  ++started;
  return real(thread, attributes, work, argument);
}
