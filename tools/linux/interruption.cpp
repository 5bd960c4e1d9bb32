#include "interruption.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <iterator>

namespace {

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGTERM};

// What each signal does without the object.
struct sigaction usual[std::size(kSignals)];

// The signal that came first; 0 if none did.
std::atomic<int> received = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

void restore() {
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    sigaction(kSignals[i], &usual[i], nullptr);
  }
}

extern "C" void note(int signal) {
  received = signal;
  restore();
}

}  // namespace

Interruption::Interruption() {
  struct sigaction action {};
  action.sa_handler = note;
  // Without SA_RESTART, so that a command does not wait on for standard input.
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    sigaction(kSignals[i], nullptr, &usual[i]);
  }
  for (std::size_t i = 0; i < std::size(kSignals); ++i) {
    if (usual[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

Interruption::~Interruption() {
  restore();
  if (received == 0) return;
  std::fflush(stdout);
  raise(received);
}

bool isInterrupted() { return received != 0; }
