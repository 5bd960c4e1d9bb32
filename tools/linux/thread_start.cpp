#include "thread_start.h"

#include <sched.h>

#include <algorithm>
#include <csignal>
#include <thread>

namespace {

// What the thread did with signals before the object.
thread_local sigset_t before;

}  // namespace

// std::thread::hardware_concurrency() counts processors that the program may not use.
unsigned int usableProcessors() {
  cpu_set_t processors;
  const bool isKnown = sched_getaffinity(0, sizeof(processors), &processors) == 0;
  const unsigned int count = isKnown ? static_cast<unsigned int>(CPU_COUNT(&processors))
                                     : std::thread::hardware_concurrency();
  return std::max(count, 1U);
}

StartWithoutRequests::StartWithoutRequests() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
}

StartWithoutRequests::~StartWithoutRequests() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
